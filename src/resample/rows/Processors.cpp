#include "Processors.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <thread>
#include <vector>

#ifdef __linux__
#include <sched.h>

#include <cerrno>
#endif

namespace volux::resample::detail {

namespace {

constexpr double kNoQuota = std::numeric_limits<double>::infinity();

// The quota of one group: processor time over the time in which it may be spent. "max", -1 and no
// file at all are no quota.
double quotaOfVersion2(const std::string& group)
{
    double quota = 0.0;
    double period = 0.0;
    std::ifstream(group + "/cpu.max") >> quota >> period;
    return quota > 0.0 && period > 0.0 ? quota / period : kNoQuota;
}

double quotaOfVersion1(const std::string& group)
{
    double quota = 0.0;
    double period = 0.0;
    if (std::ifstream(group + "/cpu.cfs_quota_us") >> quota && quota > 0.0) {
        std::ifstream(group + "/cpu.cfs_period_us") >> period;
    }
    return quota > 0.0 && period > 0.0 ? quota / period : kNoQuota;
}

double quotaUpwards(double (*quotaOf)(const std::string&), const std::string& mount,
                    std::string group)
{
    double least = kNoQuota;
    while (!group.empty()) {
        least = std::min(least, quotaOf(mount + group));
        group.erase(group.rfind('/'));
    }
    return std::min(least, quotaOf(mount));
}

#ifdef __linux__
// 0 if the system does not say.
unsigned int allowedProcessors()
{
    constexpr std::size_t kMostSets = 1024;  // of 1024 processors each
    for (std::size_t sets = 1; sets <= kMostSets; sets *= 2) {
        std::vector<cpu_set_t> mask(sets);
        const std::size_t bytes = sets * sizeof(cpu_set_t);
        if (sched_getaffinity(0, bytes, mask.data()) == 0) {
            return static_cast<unsigned int>(CPU_COUNT_S(bytes, mask.data()));
        }
        if (errno != EINVAL) {  // there: the mask is too short
            break;
        }
    }
    return 0;
}
#endif

}  // namespace

double quotaOfGroups(const std::string& root)
{
    double least = kNoQuota;
    std::ifstream groups(root + "/proc/self/cgroup");
    for (std::string line; std::getline(groups, line);) {  // number:controllers:/path
        const std::size_t controllers = line.find(':') + 1;
        const std::size_t path = line.find(":/", controllers);
        if (controllers == 0 || path == std::string::npos) {
            continue;
        }
        const std::string names = "," + line.substr(controllers, path - controllers) + ",";
        const std::string group = line.substr(path + 1) == "/" ? "" : line.substr(path + 1);
        if (names == ",,") {
            least = std::min(least, quotaUpwards(quotaOfVersion2, root + "/sys/fs/cgroup", group));
        } else if (names.find(",cpu,") != std::string::npos) {
            least =
                std::min(least, quotaUpwards(quotaOfVersion1, root + "/sys/fs/cgroup/cpu", group));
        }
    }
    return least;
}

unsigned int processors()
{
    unsigned int most = 0;
    double quota = kNoQuota;
#ifdef __linux__
    most = allowedProcessors();
    quota = quotaOfGroups("");
#endif
    most = std::max(most != 0 ? most : std::thread::hardware_concurrency(), 1U);
    return quota < most ? static_cast<unsigned int>(std::ceil(quota)) : most;
}

}  // namespace volux::resample::detail
