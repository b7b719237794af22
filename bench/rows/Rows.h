// What is measured of the library, each with whoever else does it.
#pragma once

#include <vector>

#include "Contest.h"
#include "peers/Peer.h"

namespace bench {

void AddLoadRows(const Peers& peers, std::vector<RowMaker>& rows);
void AddSaveRows(const Peers& peers, std::vector<RowMaker>& rows);
void AddPngRows(const Peers& peers, std::vector<RowMaker>& rows);
void AddColorRows(const Peers& peers, std::vector<RowMaker>& rows);
void AddFileRows(const Peers& peers, std::vector<RowMaker>& rows);
void AddPageRows(const Peers& peers, std::vector<RowMaker>& rows);
/// What every loop on this machine has to live with.
void AddMachineRows(std::vector<RowMaker>& rows);
/// The command line, each run a process of its own.
void AddCommandRows(std::vector<RowMaker>& rows);

}  // namespace bench
