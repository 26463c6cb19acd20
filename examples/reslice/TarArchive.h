// The files of a tar archive, compressed or not.
#pragma once

#include <string>
#include <vector>

namespace reslice {

/// Returns the contents of the files whose last name component is in `names`, in that order;
/// a missing file is empty. Throws Failure for an archive that is damaged or cut off.
std::vector<std::string> extractFromTar(const std::string& path,
                                        const std::vector<std::string>& names);

}  // namespace reslice
