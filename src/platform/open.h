// What programs put in front of the files that the readers open.
#pragma once

#include <functional>
#include <string>

#include "platform/byteblock.h"
#include "platform/substitutes/door.h"

// Called when a chart is opened (FileOpenAsNamed), with the name as it was opened and the file's bytes.
// Returns the bytes to read instead; null to read the file as it is. May register files.
using ChartMaker = std::function<SharedBytes(const std::string& name, const ByteBlock& chart)>;
void SetChartMaker(ChartMaker maker);  // empty: charts are read as they are

// A file that FileOpen makes when this name is opened, spelled exactly so, whatever the disk has. Until the
// sounds of the chart are loaded, or the next chart is opened.
void RegisterFile(const std::string& name, FileMaker maker);
