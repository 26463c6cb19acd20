// How many processors a call takes for its own: the affinity and the quotas of control groups.
#include <gtest/gtest.h>
#include <sched.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "resample/Expected.h"
#include "resample/rows/Processors.h"

namespace volux::test {
namespace {

using resample::detail::quotaOfGroups;

// A folder that holds what a system says of its control groups.
class Quotas : public ::testing::Test {
protected:
    Quotas()
    {
        std::string path = (std::filesystem::temp_directory_path() / "volux.XXXXXX").string();
        EXPECT_NE(mkdtemp(path.data()), nullptr);
        root = path;
    }
    ~Quotas() override { std::filesystem::remove_all(root); }

    void write(const std::string& file, const std::string& text) const
    {
        const std::filesystem::path path = root + file;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << text;
    }

    std::string root;
};

constexpr double kNone = std::numeric_limits<double>::infinity();

TEST_F(Quotas, AreNoneWhereThereAreNoGroups)
{
    EXPECT_EQ(quotaOfGroups(root), kNone);
    write("/proc/self/cgroup", "");
    EXPECT_EQ(quotaOfGroups(root), kNone);
    write("/proc/self/cgroup", "0::/gone\n12:cpu:/gone\nnonsense\n3:cpu\n:\n4:cpu:nowhere\n");
    EXPECT_EQ(quotaOfGroups(root), kNone);
}

TEST_F(Quotas, OfVersion2AreTheSmallestUpToTheRoot)
{
    write("/proc/self/cgroup", "0::/pod/box\n");
    write("/sys/fs/cgroup/pod/box/cpu.max", "max 100000\n");
    EXPECT_EQ(quotaOfGroups(root), kNone);
    write("/sys/fs/cgroup/pod/cpu.max", "150000 100000\n");
    EXPECT_EQ(quotaOfGroups(root), 1.5);
    write("/sys/fs/cgroup/pod/box/cpu.max", "50000 20000\n");
    EXPECT_EQ(quotaOfGroups(root), 1.5);
    write("/sys/fs/cgroup/cpu.max", "50000 200000\n");
    EXPECT_EQ(quotaOfGroups(root), 0.25);
}

TEST_F(Quotas, OfAContainerThatSeesItsOwnGroupAsTheRootCount)
{
    write("/proc/self/cgroup", "0::/\n");
    write("/sys/fs/cgroup/cpu.max", "300000 100000\n");
    EXPECT_EQ(quotaOfGroups(root), 3.0);
}

TEST_F(Quotas, OfVersion1AreTheSmallestUpToTheRoot)
{
    write("/proc/self/cgroup", "5:cpuset:/other\n4:cpu,cpuacct:/docker/1f\n0::/\n");
    write("/sys/fs/cgroup/cpu/docker/1f/cpu.cfs_quota_us", "-1\n");
    write("/sys/fs/cgroup/cpu/docker/1f/cpu.cfs_period_us", "100000\n");
    EXPECT_EQ(quotaOfGroups(root), kNone);
    write("/sys/fs/cgroup/cpu/cpu.cfs_quota_us", "250000\n");
    write("/sys/fs/cgroup/cpu/cpu.cfs_period_us", "100000\n");
    EXPECT_EQ(quotaOfGroups(root), 2.5);
    write("/sys/fs/cgroup/cpu/docker/1f/cpu.cfs_quota_us", "20000\n");
    EXPECT_EQ(quotaOfGroups(root), 0.2);
}

// The threads that a call's progress callback has been called from.
std::size_t threadsOfACall()
{
    VxImage<short> source;
    VxImage<short> result;
    source.initialize(64, 64, 64, 1);
    std::set<std::thread::id> ids;
    Options options = Cubic();
    options.progress = [&](double) {
        ids.insert(std::this_thread::get_id());
        std::this_thread::sleep_for(std::chrono::microseconds(200));  // the others have their turn
        return true;
    };
    EXPECT_EQ(resize(source, 128, 128, 128, resample::Align::EDGES, &result, options), SUCCESS);
    return ids.size();
}

TEST(Processors, AreThoseOfTheCallersAffinity)
{
    std::thread([] {
        cpu_set_t allowed;
        ASSERT_EQ(sched_getaffinity(0, sizeof allowed, &allowed), 0);
        const auto all = static_cast<unsigned int>(CPU_COUNT(&allowed));
        EXPECT_LE(resample::detail::processors(), all);
        EXPECT_LE(threadsOfACall(), all);
        int first = 0;
        while (!CPU_ISSET(first, &allowed))
            ++first;
        CPU_ZERO(&allowed);
        CPU_SET(first, &allowed);
        ASSERT_EQ(sched_setaffinity(0, sizeof allowed, &allowed), 0);
        EXPECT_EQ(resample::detail::processors(), 1U);
        EXPECT_EQ(threadsOfACall(), 1U);
    }).join();
}

}  // namespace
}  // namespace volux::test
