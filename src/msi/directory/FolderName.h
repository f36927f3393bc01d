#pragma once
// Rules for single folder names as Windows compares and accepts them.

#include <string_view>

namespace odlex::directory {

// Windows compares file and folder names without regard to case (simple Unicode case folding).
bool sameFolderName(std::u16string_view a, std::u16string_view b);

// A long folder name the installer accepts: 1 to 255 code units, no control character and none
// of \ / ? | > < : * ", and not "." or ".." (those are path steps, not names).
bool isValidLongName(std::u16string_view name);

}  // namespace odlex::directory
