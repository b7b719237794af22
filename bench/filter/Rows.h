// What is measured of the filter alone: its row decoder and its saves, each against a tight loop.
#pragma once

#include <vector>

#include "Contest.h"

namespace bench {

void AddDecoderRows(void* filter, std::vector<RowMaker>& rows);
void AddEncoderRows(void* filter, std::vector<RowMaker>& rows);

}  // namespace bench
