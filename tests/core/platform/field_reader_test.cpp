#include "core/platform/field_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/platform/line_reader.h"
#include "support/test_support.h"

namespace corvanet::test {
namespace {

using Fields = std::vector<std::string>;

// Every record of a file read as (key, value) pairs, the way the settings and list readers do.
std::vector<Fields> ReadPairs(const std::string& path) {
  FieldReader reader(path);
  std::vector<Fields> records;
  std::string first;
  std::string second;
  while (!reader.AtEnd()) {
    const bool complete = reader.ReadRecord(first, second);
    records.push_back(complete ? Fields{first, second} : Fields{first});
  }
  return records;
}

std::vector<std::string> AllLines(const std::string& path) {
  LineReader reader(path);
  std::vector<std::string> lines;
  std::string_view line;
  while (reader.Next(line)) lines.emplace_back(line);
  return lines;
}

TEST(SplitFieldsTest, QuotesBlanksAndEmptyFields) {
  EXPECT_EQ(SplitFields("a,b"), (Fields{"a", "b"}));
  EXPECT_EQ(SplitFields("  Dow Jones  , $INDU \t"), (Fields{"Dow Jones", "$INDU"}));
  EXPECT_EQ(SplitFields(R"("Smith, Jones & Co"," $X ")"), (Fields{"Smith, Jones & Co", " $X "}));
  EXPECT_EQ(SplitFields(R"(  "quoted"  ,next)"), (Fields{"quoted", "next"}));
  EXPECT_EQ(SplitFields(R"("ab"junk,c)"), (Fields{"ab", "c"}));  // text after the quote is dropped
  EXPECT_EQ(SplitFields(R"("unclosed, still one)"), (Fields{"unclosed, still one"}));
  EXPECT_EQ(SplitFields("a,"), (Fields{"a", ""}));
  EXPECT_EQ(SplitFields(",,"), (Fields{"", "", ""}));
  EXPECT_EQ(SplitFields(""), (Fields{""}));
}

TEST(FieldReaderTest, RecordsFlowAcrossLinesAsTheClassicReaderReadsThem) {
  TempDir dir;
  // Blank lines hold no field; a line with three fields lends its last to the next record; a line
  // with one borrows the next line's first.
  WriteFile(dir / "f.csv", "a,b\r\n\r\n   \r\nc,d,e\r\nf\r\ng,\"h, i\"\r\nshort");
  EXPECT_EQ(ReadPairs(dir / "f.csv"),
            (std::vector<Fields>{{"a", "b"}, {"c", "d"}, {"e", "f"}, {"g", "h, i"}, {"short"}}));
}

TEST(FieldReaderTest, LineEndsAndTrailingCommas) {
  TempDir dir;
  WriteFile(dir / "lf.csv", "a,b\nc,d\n");
  WriteFile(dir / "crlf.csv", "a,b\r\nc,d\r\n");
  WriteFile(dir / "no_end.csv", "a,b\r\nc,d");
  const std::vector<Fields> expected = {{"a", "b"}, {"c", "d"}};
  for (const char* name : {"lf.csv", "crlf.csv", "no_end.csv"}) {
    EXPECT_EQ(ReadPairs(dir / name), expected) << name;
  }
  // A trailing comma closes the record with an empty value instead of borrowing the next line.
  WriteFile(dir / "comma.csv", "UserName,\r\nPassword,pw\r\n");
  EXPECT_EQ(ReadPairs(dir / "comma.csv"),
            (std::vector<Fields>{{"UserName", ""}, {"Password", "pw"}}));
}

TEST(LineReaderTest, LongLinesAndEndingsAcrossBufferBoundaries) {
  TempDir dir;
  const std::size_t chunk = 64 * 1024;
  std::string content;
  std::vector<std::string> expected;
  // A line that ends with CR exactly at the buffer's end and LF at the next buffer's start.
  expected.push_back(std::string(chunk - 2, 'a') + "Z");
  // Lines longer than the buffer, several times over.
  expected.push_back(std::string(chunk + 17, 'b'));
  expected.push_back(std::string(3 * chunk + 5, 'c'));
  expected.push_back("");  // an empty line keeps its place
  for (int i = 0; i < 5000; ++i) expected.push_back("line " + std::to_string(i));
  for (const std::string& line : expected) content += line + "\r\n";
  content += "last without ending";
  expected.push_back("last without ending");
  ASSERT_EQ(content[chunk - 1], '\r');
  ASSERT_EQ(content[chunk], '\n');
  WriteFile(dir / "long.txt", content);
  EXPECT_EQ(AllLines(dir / "long.txt"), expected);

  // The same split with LF alone, and a CR that is not a line end stays in the line.
  WriteFile(dir / "lf.txt", std::string(chunk - 1, 'x') + "\nmid\rdle\nend\r\n");
  EXPECT_EQ(AllLines(dir / "lf.txt"),
            (std::vector<std::string>{std::string(chunk - 1, 'x'), "mid\rdle", "end"}));
}

}  // namespace
}  // namespace corvanet::test
