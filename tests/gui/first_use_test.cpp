// A new user's first steps in the window, against the demo service: typing the log-in over the
// initial texts.
#include "gui_service_fixture.h"

namespace corvanet::test {
namespace {

using GuiFirstUse = GuiServiceTest;

TEST_F(GuiFirstUse, TypingOverAnyFieldKeepsEveryCharacter) {
  struct Case {
    const char* field;
    std::string WindowState::*value;
    std::string typed;
  };
  // The password's first character was lost when its echo mode changed under the typing.
  const Case cases[] = {
      {"Password", &WindowState::Password, "secret"},
      {"UserName", &WindowState::UserName, "demo"},
      {"IPAddress", &WindowState::IPAddress, "127.0.0.1:8080"},
      {"RetryNumber", &WindowState::RetryNumber, "12"},
      {"Text5", &WindowState::Text5, "Nasdaq"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.field);
    TypeOver(c.field, c.typed);
    EXPECT_EQ(session_.ui.*c.value, c.typed);
    EXPECT_EQ(Find<QLineEdit>(c.field)->text().toStdString(), c.typed);
  }
  EXPECT_EQ(Find<QLineEdit>("Password")->echoMode(), QLineEdit::Password);

  // More typed at the end of a password already there is added to it, not put in its place.
  auto* password = Find<QLineEdit>("Password");
  password->setFocus();
  password->end(false);
  QTest::keyClicks(password, "99");
  EXPECT_EQ(session_.ui.Password, "secret99");
  EXPECT_TRUE(messages.empty());
}

TEST_F(GuiFirstUse, ClickingIntoAnInitialTextSelectsItForReplacing) {
  window_->show();
  window_->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
  window_->tabs()->setCurrentIndex(2);
  auto* user = Find<QLineEdit>("UserName");
  QTest::mouseClick(user, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
  ASSERT_TRUE(ProcessUntil([user] { return user->hasSelectedText(); }));
  QTest::keyClicks(user, "demo");
  EXPECT_EQ(session_.ui.UserName, "demo");
}

}  // namespace
}  // namespace corvanet::test
