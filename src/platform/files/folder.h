// Folders of charts.
#pragma once

#include <string>

bool IsFolder(const std::string& path);

// The path of the only .bms, .bme, .bml or .pms file in a folder, hidden ones aside; empty when there are
// several or none.
std::string OnlyChart(const std::string& folder);
