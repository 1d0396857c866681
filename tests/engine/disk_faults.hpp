// Makes the disk fail under LMDB: this program's own pwrite(), writev() and fdatasync() stand before the
// system's.
#pragma once

namespace twcfg::testing {

enum class DiskFault { none, data_write, short_data_write, flush, meta_write };

// From now on, in this process, every such operation fails with `error`. The meta write fails once only: LMDB
// then puts the old one back.
void set_disk_fault(DiskFault fault, int error = 0);

struct DiskFaultScope {
  DiskFaultScope(DiskFault fault, int error) { set_disk_fault(fault, error); }
  DiskFaultScope(const DiskFaultScope &) = delete;
  DiskFaultScope &operator=(const DiskFaultScope &) = delete;
  ~DiskFaultScope() { set_disk_fault(DiskFault::none); }
};

}  // namespace twcfg::testing
