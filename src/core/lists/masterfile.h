#pragma once
// The data set's master file: which one, where it lives on the service, and the master list box.
#include <string>
#include <string_view>

#include "core/state/session.h"

namespace corvanet {

struct DataSet {
  std::string_view master_file_name;
  std::string_view server_path;  // appended to the IPAddress host text
  std::string_view caption;      // shown in FullPath ("DataALL" is spelled so on purpose)
};

// The data set the two boxes choose: US wins over Plus, Plus over the standard set.
const DataSet& ChosenDataSet(const WindowState& ui);

// The host and port of the IPAddress text ("127.0.0.1:8080", "https://data.example.com"), with
// "https://" kept in front and without a leading "http://" or trailing slashes, which the
// service's URLs already have.
std::string ServiceHost(std::string_view address);

// Sets MasterFileName, DataSetURL and the FullPath caption from the data-set boxes, then reloads
// the master list.
void SelectMasterfile(Session& session);
// Fills the master list box from BaseDirectory + MasterFileName: "name,symbol", both trimmed.
void LoadMasterfile(Session& session);
std::string MasterFilePath(const Session& session);

}  // namespace corvanet
