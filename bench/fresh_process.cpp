// What a fresh process pays: the time from the start of main to the first value, or the memory that its
// handle holds after 0, 1, 100 and all nodes. Prints numbers on one line for twbench.
#include <malloc.h>
#include <twconfig.h>
#include <twobject.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

long long heap_bytes() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<long long>(info.uordblks + info.hblkhd);
}

// Resident memory that is not a page of a mapped file.
long long anonymous_bytes() {
  std::FILE *status = std::fopen("/proc/self/status", "re");
  if (status == nullptr) return -1;
  long long kilobytes = -1;
  for (char line[256]; std::fgets(line, sizeof line, status) != nullptr;)
    if (std::strncmp(line, "RssAnon:", 8) == 0) kilobytes = std::strtoll(line + 8, nullptr, 10);
  std::fclose(status);
  return kilobytes * 1024;
}

int print_time(cfg *store, std::chrono::steady_clock::time_point start) {
  char *hostname = nullptr;
  if (cfg_system_get_hostname(store, &hostname) == 0) return 1;
  const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
  std::free(hostname);
  std::printf("%.0f\n", taken.count());
  return 0;
}

// Heap since the handle was opened and resident memory since before, after 0, 1, 100 and `nodes` nodes.
int print_memory(cfg *store, int nodes, long long resident_before) {
  const long long heap_before = heap_bytes();
  int read = 0;
  for (const int count : {0, 1, 100, nodes}) {
    for (; read < count; ++read) {
      char id[32];
      std::snprintf(id, sizeof id, "nodes-%d", read + 1);
      cfg_node *node = cfg_get_node_by_id(store, id);
      if (node == nullptr) return 1;
      cfg_node_free(node);
    }
    std::printf("%lld %lld ", heap_bytes() - heap_before, anonymous_bytes() - resident_before);
  }
  std::printf("\n");
  return 0;
}

}  // namespace

int main(int argc, char **argv) {
  const auto start = std::chrono::steady_clock::now();
  if (argc == 2 && std::strcmp(argv[1], "idle") == 0) return 0;
  if (argc < 3) return 2;
  const bool memory = std::strcmp(argv[1], "memory") == 0;
  const long long resident = memory ? anonymous_bytes() : 0;
  cfg_failure failure = {};
  cfg *store = cfg_open(argv[2], 0, &failure);
  if (store == nullptr) {
    std::fprintf(stderr, "%s\n", failure.text);
    return 1;
  }
  const int result =
      memory ? print_memory(store, argc > 3 ? std::atoi(argv[3]) : 1, resident) : print_time(store, start);
  cfg_close(store);
  return result;
}
