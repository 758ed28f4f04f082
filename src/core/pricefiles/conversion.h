#pragma once
// The MetaStock conversion: one batch file per price-file kind, filled with one converter call per
// price file the run writes, then run one after the other, each waited for through the flag file
// Complete.txt that the helper Complete.exe sets when the batch reaches its end.
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "core/download/run_summary.h"
#include "core/platform/process.h"
#include "core/state/session.h"

namespace corvanet {

struct ConverterKind {
  std::string_view batch_file;     // in PathToLists
  std::string_view output_folder;  // under PathToMSPxFiles, before the period ("" = none)
  std::string_view start_text;     // the download button's caption, before the start time
  std::string_view progress_text;  // Label13's caption
};

// In the order of PriceFileKinds(): traditional, equal weight, user-defined 1-3.
const std::array<ConverterKind, 5>& ConverterKinds();

// One converter call written during the walk: what the converter must leave in its folder for the
// price file to count as converted.
struct ConverterCall {
  std::string symbol;  // the price file's ticker
  std::size_t bars = 0;
  std::string output_folder;
  std::string datafile;  // "$NYA.csv Daily", for the summary
};

// What the walk handed to the converter, kind by kind in the order of ConverterKinds(), and the
// price files it could not write. Kept by the run while it walks (Session::conversion_ledger);
// the batches at its end are judged against it.
struct ConversionLedger {
  struct Kind {
    std::vector<ConverterCall> calls;
    int no_bars = 0;  // price files without bars yet: nothing to convert, no call
  };
  std::array<Kind, 5> kinds;
  std::vector<DatafileFailure> failures;  // price files not written, with kind and reason
};

// Whether converter calls are written and batch files run: price files on, MetaStock format on.
bool ConvertsToMetaStock(const WindowState& ui);

// Run start, when MakeMetaStockPxFiles is ticked: empties (creates) the five batch files.
void StartConverterBatches(Session& session);

// Appends one converter call ("PxFiles -f <price file> -r fileReplace -o <folder>") to a batch
// file, creating it when needed. Both paths are quoted for the batch runner (QuoteBatchArgument),
// so each reaches the converter as one argument, exactly as it is. False when it could not be
// written.
bool AppendConverterCall(Session& session, const std::string& batch_file,
                         const std::string& price_file, const std::string& output_folder);

// The MetaStock folder the converter writes a kind's files of the period in hand into, without a
// trailing separator.
std::string ConverterOutputFolder(const Session& session, std::size_t kind);

// Why the converter cannot be run ("" when it can): the helpers are not where the batches find
// them, or PxFiles does not answer a call for its usage as it should. Asked before anything is
// emptied, so a run without a working converter keeps the MetaStock folders it has.
std::string CheckConverter(Session& session);

// Empties the MetaStock period folders of a full list (6: Daily; 7: all four) of the files the
// converter writes, so securities that left the master file go too. False (nothing deleted) when
// a folder is one the program must not delete in.
bool ClearMetaStockFolders(Session& session, int list);

// Waits until Complete.txt in PathToLists holds a number other than 0, polling every 0.25 s and
// letting the window repaint, then writes 0 into it again. It also stops when the batch process has
// ended with the flag still 0 (a missing converter or helper) and when the user asks the run to
// stop; false then, with `problem` saying which.
bool WaitForConversion(Session& session, BatchProcess& batch, std::string& problem);

// Run end, when MakeMetaStockPxFiles is ticked: writes 0 into Complete.txt and runs the batch of
// every ticked kind in table order, with its captions, each waited for. Once the user asks the run
// to stop, no further batch is started. A call counts as converted only when the converter's
// folder afterwards lists its security with the price file's number of bars (`ledger`, read back
// with the converter's own index reader). One entry per ticked kind.
std::vector<ConversionOutcome> RunConverterBatches(Session& session,
                                                   const ConversionLedger& ledger);

}  // namespace corvanet
