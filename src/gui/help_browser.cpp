#include "gui/help_browser.h"

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
  const QString anchor = hash == std::string::npos
                             ? QString()
                             : QString::fromStdString(path_and_anchor.substr(hash + 1));
  if (file.isEmpty()) {
    clear();
    return;
  }
  setSource(QUrl::fromLocalFile(file));
  if (anchor.isEmpty()) return;
  scrollToAnchor(anchor);
  // A page loaded before the view has its size is laid out again when shown; scroll once more then.
  QTimer::singleShot(0, this, [this, anchor] { scrollToAnchor(anchor); });
}

}  // namespace corvanet::gui
