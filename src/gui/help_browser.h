#pragma once
// A help page view: shows a local HTML file named by a path that may end in "#anchor".
#include <QTextBrowser>
#include <string>

namespace corvanet::gui {

class HelpBrowser final : public QTextBrowser {
  Q_OBJECT

 public:
  explicit HelpBrowser(QWidget* parent = nullptr);
  // Loads the page when the path differs from the one shown, then scrolls its anchor to the top.
  void ShowPage(const std::string& path_and_anchor);
  const std::string& shown() const { return shown_; }

 private:
  void ScrollToAnchor();

  std::string shown_;
  QString anchor_;
};

}  // namespace corvanet::gui
