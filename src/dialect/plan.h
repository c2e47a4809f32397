// The steps of MakePlan that deal numbers.
#pragma once

#include "dialect/dialect.h"

namespace dialect {

// Sounds: who plays from a file of its own, who is mixed, and the numbers of both.
void PlanSounds(const Chart& chart, const TimeMap& times, const Options& options, Plan* plan,
                Findings* findings);
// Puts what is mixed into stems of so many measures each. mixed: for each of the author's numbers the index
// in plan->mixed, or -1.
void FillStems(const TimeMap& times, const std::vector<int32_t>& mixed, const std::vector<double>& lengths_ms,
               int32_t span, bool share, Plan* plan);
// Leaves out the films of the plan.
void PlanPictures(const Chart& chart, const Options& options, Plan* plan, Findings* findings);
// Lists the films that objects show.
void FindFilms(const Chart& chart, const Options& options, Plan* plan);
// After PlanPictures: turns each object that shows a film into one for each still until the next object of
// its channel. The stills of all films share the numbers that are left, at an even rate.
void PlanFilms(const Chart& chart, const TimeMap& times, Plan* plan, Findings* findings);
// The name of a sheet from its number, beginning with `head`.
std::string SheetName(const std::string& head, size_t number);

// A name that no file of the chart has: the stem of it with as many x in front as it takes.
std::string OwnName(const Chart& chart, std::string_view name);

}  // namespace dialect
