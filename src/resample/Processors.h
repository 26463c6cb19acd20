// How many processors a call may use.
#pragma once

#include <string>

namespace volux::resample::detail {

// At least 1: the processors that this thread may run on, or fewer where a quota of the process's
// control groups pays for fewer. On Linux it reads their files, which takes some 30 us: to be asked
// only when there is work for more than one thread.
unsigned int processors();

// The smallest quota of the control groups that a process is in, from its own up to the root, in
// processors; infinite if there is none. `root` precedes the paths of all files that are read.
// The groups are looked for where they are mounted by convention: /sys/fs/cgroup (version 2) and
// /sys/fs/cgroup/cpu (version 1).
double quotaOfGroups(const std::string& root);

}  // namespace volux::resample::detail
