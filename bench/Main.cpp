// Measures the library and the peers that this program was built with.
#include <malloc.h>

#include "Samples.h"
#include "TightLoops.h"
#include "rows/Rows.h"

namespace {

int MakeFiles(const bench::Options& options) {
  if (!options.picture.empty()) bench::WriteHuge(options.picture, options.hugeSide);
  if (options.icon.empty()) return 0;
  const bench::Bytes icon = bench::Icon(options.pages);
  bench::CopyAndWrite(options.icon, icon.data(), icon.size());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  bench::Options options;
  if (!bench::ReadOptions(argc, argv, options)) return 2;
  if (!options.icon.empty() || !options.picture.empty()) return MakeFiles(options);
  // Memory that was had once stays, for everybody: what the system takes to clear fresh pages would drown the
  // rest.
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, -1);
  const bench::Peers peers = options.hasPeers ? bench::FindPeers(options.folder) : bench::Peers();
  std::vector<bench::RowMaker> rows;
  bench::AddMachineRows(rows);
  bench::AddLoadRows(peers, rows);
  bench::AddColorRows(peers, rows);
  bench::AddSaveRows(peers, rows);
  bench::AddPngRows(peers, rows);
  bench::AddFileRows(peers, rows);
  bench::AddPageRows(peers, rows);
  if (!options.isCounting) bench::AddCommandRows(rows);
  return bench::Run(rows, options) ? 0 : 1;
}
