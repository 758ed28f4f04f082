#include "core/state/window_state.h"

#include "core/platform/text.h"

namespace corvanet {

int ListBox::FindExactIgnoreCase(std::string_view text) const {
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (EqualsIgnoreCase(items[i], text)) return static_cast<int>(i);
  }
  return -1;
}

std::string CheckText(int value) {
  return NumberText(value);
}

void ClearRunOutcome(WindowState& ui) {
  ui.RunOutcome.caption = WindowState().RunOutcome.caption;
  ui.RunSummaryLines.clear();
  ui.RunFailed = false;
  ui.RunProblems = {"", false};
  // A bar left at the last run's end would pass for the progress of the list now shown.
  ui.ProgressBar1.value = ui.ProgressBar1.minimum;
  ui.ProgressBar1.visible = false;
}

}  // namespace corvanet
