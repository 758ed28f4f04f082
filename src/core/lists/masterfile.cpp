#include "core/lists/masterfile.h"

#include <string>

#include "core/platform/field_reader.h"
#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet {

namespace {
const DataSet kStandard{"Masterfile2.csv", "/ovalith/data/", "/ovalith/data/"};
const DataSet kAllIssues{"Masterfile1.csv", "/ovalith/DataAll/", "/ovalith/DataALL/"};
const DataSet kUsIssues{"MasterfileUS.csv", "/ovalith/DataUS/", "/ovalith/DataUS/"};
}  // namespace

const DataSet& ChosenDataSet(const WindowState& ui) {
  // Tested in table order, so the later box wins when both are ticked.
  const DataSet* chosen = &kStandard;
  if (ui.DataSetPlus != 0) chosen = &kAllIssues;
  if (ui.DataSetAllUS != 0) chosen = &kUsIssues;
  return *chosen;
}

std::string ServiceHost(std::string_view address) {
  std::string_view host = Trim(address);
  // Users paste the address from a browser; the program puts the path itself. "http://" is
  // what an address without a scheme means, so it is dropped; "https://" is kept.
  std::string scheme;
  for (const std::string_view known : {"http://", "https://"}) {
    if (host.size() >= known.size() && ToLower(host.substr(0, known.size())) == known) {
      host.remove_prefix(known.size());
      if (known == "https://") scheme = known;
      break;
    }
  }
  while (!host.empty() && host.back() == '/') host.remove_suffix(1);
  return scheme + std::string(host);
}

std::string MasterFilePath(const Session& session) {
  return session.app.BaseDirectory + session.app.MasterFileName;
}

void SelectMasterfile(Session& session) {
  LogEntry(session, "SelectMasterfile");
  const DataSet& data_set = ChosenDataSet(session.ui);
  session.app.MasterFileName = std::string(data_set.master_file_name);
  session.app.DataSetURL = ServiceHost(session.ui.IPAddress) + std::string(data_set.server_path);
  session.ui.FullPath.caption = std::string(data_set.caption);
  LoadMasterfile(session);
}

void LoadMasterfile(Session& session) {
  LogEntry(session, "LoadMasterfile");
  session.ui.List5.Clear();
  const std::string path = MasterFilePath(session);
  FieldReader reader;
  if (!reader.Open(path)) {
    Log(session, "LoadMasterfile - cannot read " + path);
    return;
  }
  std::string name;
  std::string symbol;
  while (!reader.AtEnd()) {
    if (!reader.ReadRecord(name, symbol)) {
      Log(session, "LoadMasterfile - last record of " + path + " has no symbol: " + name);
      break;
    }
    session.ui.List5.Add(name + "," + symbol);
  }
}

}  // namespace corvanet
