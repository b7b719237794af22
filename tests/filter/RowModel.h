// What the row decoder must deliver, worked out slowly: one byte, one pixel, one rule at a time.
// Shares nothing with the filter but the contract, so that neither can hide the other's fault.
#pragma once

#include <vector>

#include "Rig.h"

struct RowResult {
  int status = STATUS_OK;
  std::vector<DeliveredRow> rows;
};

/** Decodes data as image, under load's buffer size, band, masks and flags; a fault strikes the reads. */
RowResult ModelRows(const RowImage& image, const Bytes& data, const _LOADDISPATCH& load,
                    const std::vector<Fault>& faults);
