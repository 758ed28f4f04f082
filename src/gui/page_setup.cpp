// The two help pages: the introduction and the step-by-step setup with its help buttons.
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/app/startup.h"
#include "core/ui/help_pages.h"
#include "gui/help_browser.h"
#include "gui/page.h"

namespace corvanet::gui {

namespace {

class IntroductionPage final : public Page {
 public:
  explicit IntroductionPage(PageHost& host) : Page(host), browser_(new HelpBrowser) {
    browser_->setObjectName("WebBrowser1");
    auto* button_row = new QWidget;
    auto* buttons = new QHBoxLayout(button_row);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->addWidget(
        bind_.Button("CheckForUpdates", "Check For Updates", &CheckForUpdates_Click));
    buttons->addStretch();
    auto* exit = new QPushButton("Exit");
    exit->setObjectName("Exit1");
    connect(exit, &QPushButton::clicked, this, [this] { host_.ExitClicked(1); });
    buttons->addWidget(exit);
    auto* layout = new QVBoxLayout(content());
    layout->addWidget(browser_, 1);
    layout->addWidget(button_row);
    // The page stays readable during a run; only its buttons cannot act then.
    LockOnly({button_row});
  }

  void Render(const WindowState& state) override {
    browser_->ShowPage(state.WebBrowser1Page);
    bind_.Render(state);
  }

 private:
  HelpBrowser* browser_;
};

class SetupPage final : public Page {
 public:
  explicit SetupPage(PageHost& host) : Page(host), browser_(new HelpBrowser) {
    browser_->setObjectName("WebBrowser2");
    auto* frame = new QGroupBox("Setup");
    frame->setObjectName("Frame7");
    auto* column = new QVBoxLayout(frame);
    for (const HelpButtonDef& def : HelpButtons()) {
      auto* button = new QPushButton(
          QString::fromUtf8(def.caption.data(), static_cast<qsizetype>(def.caption.size())));
      button->setObjectName(
          QString::fromUtf8(def.name.data(), static_cast<qsizetype>(def.name.size())));
      const HelpButton which = def.button;
      connect(button, &QPushButton::clicked, this,
              [this, which] { host_.Handle([which](Session& s) { HelpButton_Click(s, which); }); });
      column->addWidget(button);
      buttons_.push_back(button);
    }
    column->addStretch();
    auto* side = new QVBoxLayout;
    side->addWidget(frame, 1);
    side->addWidget(InertExitButton("Exit6"));
    auto* layout = new QHBoxLayout(content());
    layout->addLayout(side);
    layout->addWidget(browser_, 1);
    LockOnly({frame});
  }

  void Render(const WindowState& state) override {
    browser_->ShowPage(state.WebBrowser2Page);
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
      QFont font = buttons_[i]->font();
      if (font.bold() == state.HelpButtonBold[i]) continue;
      font.setBold(state.HelpButtonBold[i]);
      buttons_[i]->setFont(font);
    }
    bind_.Render(state);
  }

 private:
  HelpBrowser* browser_;
  std::vector<QPushButton*> buttons_;  // in the order of HelpButtons()
};

}  // namespace

Page* MakeIntroductionPage(PageHost& host) {
  return new IntroductionPage(host);
}
Page* MakeSetupPage(PageHost& host) {
  return new SetupPage(host);
}

}  // namespace corvanet::gui
