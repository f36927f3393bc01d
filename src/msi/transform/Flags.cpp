#include <cstdlib>

#include "msi/transform/Transform.h"

namespace odlex::transform {

const std::vector<FlagName>& errorConditionNames() {
  static const std::vector<FlagName> names = {
      {"add-existing-row", kAddExistingRow},     {"delete-missing-row", kDeleteMissingRow},
      {"add-existing-table", kAddExistingTable}, {"delete-missing-table", kDeleteMissingTable},
      {"update-missing-row", kUpdateMissingRow}, {"change-codepage", kChangeCodePage},
  };
  return names;
}

const std::vector<FlagName>& validationNames() {
  static const std::vector<FlagName> names = {
      {"language", kValidateLanguage},
      {"product", kValidateProduct},
      {"platform", kValidatePlatform},
      {"major-version", kValidateMajorVersion},
      {"minor-version", kValidateMinorVersion},
      {"update-version", kValidateUpdateVersion},
      {"new-less-base-version", kValidateNewLessBaseVersion},
      {"new-less-equal-base-version", kValidateNewLessEqualBaseVersion},
      {"new-equal-base-version", kValidateNewEqualBaseVersion},
      {"new-greater-equal-base-version", kValidateNewGreaterEqualBaseVersion},
      {"new-greater-base-version", kValidateNewGreaterBaseVersion},
      {"upgrade-code", kValidateUpgradeCode},
  };
  return names;
}

bool parseFlags(const std::string& text, const std::vector<FlagName>& names, std::uint32_t& flags,
                std::string& error) {
  flags = 0;
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t end = text.find(',', start);
    if (end == std::string::npos)
      end = text.size();
    const std::string word = text.substr(start, end - start);
    start = end + 1;
    if (word.empty())
      continue;
    char* rest = nullptr;
    const unsigned long number = std::strtoul(word.c_str(), &rest, 0);
    if (rest && *rest == '\0' && number <= 0xFFFF) {
      flags |= static_cast<std::uint32_t>(number);
      continue;
    }
    bool known = false;
    for (const FlagName& name : names) {
      if (word == name.name) {
        flags |= name.bit;
        known = true;
      }
    }
    if (!known) {
      error = "unknown flag \"" + word + "\"";
      return false;
    }
  }
  return true;
}

}  // namespace odlex::transform
