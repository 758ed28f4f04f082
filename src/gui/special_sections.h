#pragma once
// The two sections of the "Special Functions" page, each a frame of bound controls.
class QGroupBox;

namespace corvanet::gui {

class Bindings;

// "Create .csv Format Price Files and/or Generate MetaStock Format Price Files".
QGroupBox* MakePriceFileSection(Bindings& bind);
// "Create One .csv Format Datafile For Each Statistic".
QGroupBox* MakeStatisticSection(Bindings& bind);

}  // namespace corvanet::gui
