// The choice of an instruction set, which Highway makes unless a test does.
#pragma once

#include <hwy/targets.h>

#include <cstdint>
#include <string>
#include <vector>

namespace volux::test {

/// The instruction sets that volux_resample is compiled for and that this processor has.
inline std::vector<std::int64_t> instructionSets()
{
    hwy::SetSupportedTargetsForTest(0);
    std::vector<std::int64_t> all;
    for (std::int64_t left = hwy::SupportedTargets() & HWY_TARGETS; left != 0; left &= left - 1)
        all.push_back(left & -left);
    return all;
}

/// From now on; 0 for whatever Highway chooses.
inline void useInstructionSet(std::int64_t target)
{
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

/// Uses the one whose number below(count) gives, and names it.
template <class Below>
std::string chooseInstructionSet(const Below& below)
{
    const std::vector<std::int64_t> all = instructionSets();
    const std::int64_t chosen = all[below(static_cast<unsigned int>(all.size()))];
    useInstructionSet(chosen);
    return hwy::TargetName(chosen);
}

}  // namespace volux::test
