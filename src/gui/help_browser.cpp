#include "gui/help_browser.h"

#include <QTextFrame>
#include <QTimer>
#include <QUrl>

namespace corvanet::gui {

HelpBrowser::HelpBrowser(QWidget* parent) : QTextBrowser(parent) {
  // Links to web pages go to the user's browser; links between help pages stay here.
  setOpenExternalLinks(true);
}

void HelpBrowser::ShowPage(const std::string& path_and_anchor) {
  if (path_and_anchor == shown_) return;
  shown_ = path_and_anchor;
  const std::size_t hash = path_and_anchor.find('#');
  const QString file = QString::fromStdString(path_and_anchor.substr(0, hash));
  anchor_ = hash == std::string::npos ? QString()
                                      : QString::fromStdString(path_and_anchor.substr(hash + 1));
  if (file.isEmpty()) {
    clear();
    return;
  }
  QUrl url = QUrl::fromLocalFile(file);
  if (!anchor_.isEmpty()) url.setFragment(anchor_);
  setSource(url);
  ScrollToAnchor();
  // A page loaded before the view has its size is laid out again when shown; scroll once more then.
  QTimer::singleShot(0, this, [this] { ScrollToAnchor(); });
}

void HelpBrowser::ScrollToAnchor() {
  // A page shorter than the view cannot scroll its anchor to the top, and would look just like
  // the page without one; room below the text lets the anchor's heading come first.
  QTextFrame* root = document()->rootFrame();
  QTextFrameFormat format = root->frameFormat();
  const qreal room = anchor_.isEmpty() ? document()->documentMargin() : viewport()->height();
  if (format.bottomMargin() != room) {
    format.setBottomMargin(room);
    root->setFrameFormat(format);
  }
  if (!anchor_.isEmpty()) scrollToAnchor(anchor_);
}

}  // namespace corvanet::gui
