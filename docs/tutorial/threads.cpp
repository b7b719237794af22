// threads LIMIT FILE...: loads every file in a thread of its own, LIMIT bytes of memory for all of them.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>
#include <vx/image.hpp>

namespace {

struct Job {
  const char* path;
  std::string result;
};

void Run(Job& job) try {
  const vx::Bitmap bitmap = vx::Source::File(job.path).Load();
  const std::vector<uint8_t> rgba = bitmap.Rgba();
  job.result = "begins with red " + std::to_string(rgba[0]) + ", green " + std::to_string(rgba[1]) +
               ", blue " + std::to_string(rgba[2]);
} catch (const vx::Error& error) {
  job.result = error.status() == VX_NO_MEMORY ? "too large for this program" : error.what();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  vx_set_memory_limit(std::strtoull(argv[1], nullptr, 10));
  std::vector<Job> jobs;
  for (int i = 2; i < argc; ++i) jobs.push_back({argv[i], ""});
  std::vector<std::thread> threads;
  threads.reserve(jobs.size());
  for (Job& job : jobs) threads.emplace_back(Run, std::ref(job));
  for (std::thread& thread : threads) thread.join();
  for (const Job& job : jobs) std::printf("%s: %s\n", job.path, job.result.c_str());
  std::printf("%d bytes in use\n", static_cast<int>(vx_memory_in_use()));
  return 0;
}
