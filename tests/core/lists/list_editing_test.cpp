#include "core/lists/list_editing.h"

#include <gtest/gtest.h>

#include "support/test_session.h"

namespace corvanet::test {
namespace {

using Lines = std::vector<std::string>;

class ListEditingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    t.WriteMasterfile({"Dow Jones Industrial Ave. (DJIA),$INDU", "Dow Jones Transports,$TRAN",
                       "NYSE Composite,$NYA", "Nasdaq (Composite) Index,$COMPQ", "(Unnamed),$UN"});
    s.app.CurrentListNumber = "3";
  }
  void Select(ListBox& box, std::initializer_list<std::size_t> positions) {
    for (const std::size_t i : positions) box.selected[i] = true;
  }
  TestSession t;
  Session& s = t.session;
};

TEST_F(ListEditingTest, SearchAddsMatchesInAnyLetterCaseOnce) {
  s.ui.List6.Add("dow jones transports,$tran");  // present in another letter case
  s.ui.Text5 = "dOW";
  AddByString_Click(s);
  EXPECT_EQ(s.ui.List6.items,
            (Lines{"dow jones transports,$tran", "Dow Jones Industrial Ave. (DJIA),$INDU"}));
  AddByString_Click(s);
  EXPECT_EQ(s.ui.List6.size(), 2u);
  s.ui.Text5 = "E,$n";  // the comma between name and symbol is searched too
  AddByString_Click(s);
  EXPECT_EQ(s.ui.List6.items.back(), "NYSE Composite,$NYA");
  EXPECT_EQ(s.ui.List6.size(), 3u);

  s.ui.Text5.clear();  // an empty text is in every item: everything missing is added
  AddByString_Click(s);
  EXPECT_EQ(s.ui.List6.items,
            (Lines{"dow jones transports,$tran", "Dow Jones Industrial Ave. (DJIA),$INDU",
                   "NYSE Composite,$NYA", "Nasdaq (Composite) Index,$COMPQ", "(Unnamed),$UN"}));
  EXPECT_TRUE(t.shell.boxes.empty());
}

TEST_F(ListEditingTest, NoListLoadedRefusesEveryEditButTheSilentDrop) {
  s.app.CurrentListNumber = "0";
  s.ui.List6.Add("kept,$K");
  Select(s.ui.List5, {1});
  AddByString_Click(s);
  MoveAllToDownloadList_Click(s);
  EXPECT_EQ(List5_OLEStartDrag(s), "");
  List6_OLEDragDrop(s, "1");
  EXPECT_EQ(s.ui.List6.items, Lines{"kept,$K"});
  ClearList_Click(s);  // clears first, then asks for a list
  EXPECT_TRUE(s.ui.List6.items.empty());
  EXPECT_EQ(t.shell.texts(), Lines(4, "Please load a download list!"));
}

}  // namespace
}  // namespace corvanet::test
