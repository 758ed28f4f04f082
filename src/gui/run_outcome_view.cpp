#include "gui/run_outcome_view.h"

#include <QTextBrowser>
#include <QVBoxLayout>

namespace corvanet::gui {

namespace {

constexpr int kLeastLines = 3;
constexpr const char* kFailureColour = "#b00020";
constexpr const char* kSuccessColour = "#1b5e20";

QString Paragraph(const std::string& text, const QString& style) {
  return "<p style=\"margin:0; " + style + "\">" + QString::fromStdString(text).toHtmlEscaped() +
         "</p>";
}

}  // namespace

RunOutcomeView::RunOutcomeView(QWidget* parent)
    : QGroupBox("Result of the Last Download", parent), text_(new QTextBrowser) {
  setObjectName("RunSummaryFrame");
  text_->setObjectName("RunOutcome");
  text_->setOpenLinks(false);
  text_->setMinimumHeight(text_->fontMetrics().lineSpacing() * kLeastLines +
                          2 * text_->frameWidth() + 8);
  text_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(text_);
}

void RunOutcomeView::Render(const WindowState& state) {
  const bool ran = !state.RunSummaryLines.empty();
  QString html =
      Paragraph(state.RunOutcome.caption,
                !ran              ? QString()
                : state.RunFailed ? QString("font-weight:bold; color:") + kFailureColour
                                  : QString("font-weight:bold; color:") + kSuccessColour);
  if (state.RunProblems.visible && !state.RunProblems.caption.empty()) {
    html += Paragraph(state.RunProblems.caption, QString("color:") + kFailureColour);
  }
  // Failed datafiles are indented under their count; the indent must survive.
  for (const std::string& line : state.RunSummaryLines)
    html += Paragraph(line, "white-space:pre-wrap");
  if (html == shown_html_) return;  // a repaint during a run must not reset the scroll position
  shown_html_ = html;
  text_->setHtml(html);
  if (failed_ != (ran && state.RunFailed)) {
    failed_ = ran && state.RunFailed;
    text_->setStyleSheet(failed_
                             ? QString("QTextBrowser { background: #fdecea; border: 2px solid ") +
                                   kFailureColour + "; }"
                             : QString());
  }
}

QSize RunOutcomeView::sizeHint() const {
  return {QGroupBox::sizeHint().width(), minimumSizeHint().height()};
}

QString RunOutcomeView::text() const {
  return text_->toPlainText();
}

}  // namespace corvanet::gui
