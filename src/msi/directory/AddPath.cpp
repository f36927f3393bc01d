#include "msi/directory/AddPath.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "msi/directory/DefaultDir.h"
#include "msi/directory/DirectoryKey.h"
#include "msi/directory/DirectoryPath.h"
#include "msi/directory/FolderName.h"
#include "msi/directory/FolderPath.h"
#include "msi/directory/ShortName.h"
#include "msi/directory/SystemFolders.h"

namespace odlex::directory {
namespace {

// One row to find or make: its long target name and, for a pair, its long source name.
struct Step {
  std::u16string target;
  std::optional<std::u16string> source;
};

struct Sibling {
  DirectoryRow row;
  DefaultDir defaultDir;
};

std::vector<Sibling> siblingsOf(const DirectoryModel& model, const std::u16string& parent) {
  std::vector<Sibling> out;
  for (DirectoryRow& row : model.children(parent)) {
    // A sibling whose DefaultDir does not parse can neither match nor hold a short name.
    if (auto defaultDir = DefaultDir::parse(row.defaultDir)) {
      out.push_back(Sibling{std::move(row), std::move(defaultDir.value())});
    }
  }
  return out;
}

bool matches(const Sibling& sibling, const Step& step) {
  return sameFolderName(sibling.defaultDir.target().longName(), step.target) &&
         (!step.source || sameFolderName(sibling.defaultDir.source().longName(), *step.source));
}

Result<FolderNames> namesFor(const std::u16string& longName, const std::vector<Sibling>& siblings,
                             const FolderNames& (DefaultDir::*side)() const) {
  if (longName == kParentName) {
    return FolderNames(longName);
  }
  auto shortName = makeShortName(longName, [&](std::u16string_view candidate) {
    return std::any_of(siblings.begin(), siblings.end(), [&](const Sibling& s) {
      return sameFolderName((s.defaultDir.*side)().shortName(), candidate);
    });
  });
  if (!shortName) {
    return Error{shortName.error()};
  }
  return FolderNames(longName, std::move(shortName.value()));
}

Result<std::u16string> makeRow(DirectoryModel& model, const std::u16string& parent,
                               const Step& step, const std::vector<Sibling>& siblings) {
  auto target = namesFor(step.target, siblings, &DefaultDir::target);
  if (!target) {
    return Error{target.error()};
  }
  DefaultDir defaultDir(std::move(target.value()));
  if (step.source && *step.source != step.target) {
    auto source = namesFor(*step.source, siblings, &DefaultDir::source);
    if (!source) {
      return Error{source.error()};
    }
    defaultDir = DefaultDir(defaultDir.target(), std::move(source.value()));
  }
  const std::u16string& nameForKey =
      step.target == kParentName && step.source ? *step.source : step.target;
  DirectoryRow row{makeDirectoryKey(model, nameForKey), parent, defaultDir.format()};
  model.add(row);
  return row.key;
}

// The key of the row a path starting with "[property]" starts from.
std::u16string startKey(const std::u16string& property) {
  return property.empty() ? std::u16string(kTargetDir) : property;
}

// The key of the row a path starts from, made when it is TARGETDIR or a system folder.
Result<std::u16string> startRow(DirectoryModel& model, const std::u16string& property) {
  const std::u16string key = startKey(property);
  if (model.find(key)) {
    return key;
  }
  if (key != kTargetDir && !isSystemFolder(key)) {
    return Error{u"the folder property \"" + key + u"\" names no directory"};
  }
  if (!model.find(kTargetDir)) {
    model.add(DirectoryRow{std::u16string(kTargetDir), u"", std::u16string(kSourceDirName)});
  }
  if (key != kTargetDir) {
    model.add(DirectoryRow{key, std::u16string(kTargetDir), std::u16string(kParentName)});
  }
  return key;
}

// How deep the row a path starts from is (the root counts 1), before startRow makes it.
Result<std::size_t> startDepth(const DirectoryModel& model, const std::u16string& property) {
  const std::u16string key = startKey(property);
  if (!model.find(key)) {
    return std::size_t{key == kTargetDir ? 1u : 2u};
  }
  auto chain = parentChain(model, key);
  if (!chain) {
    return Error{chain.error()};
  }
  return chain->size();
}

Result<std::u16string> addSteps(DirectoryModel& model, const std::u16string& property,
                                const std::vector<Step>& steps) {
  const auto depth = startDepth(model, property);
  if (!depth) {
    return Error{depth.error()};
  }
  if (depth.value() + steps.size() > kMaxDepth) {
    return Error{u"the folder path would nest directories more than 256 deep"};
  }
  auto current = startRow(model, property);
  if (!current) {
    return current;
  }
  for (const Step& step : steps) {
    const auto siblings = siblingsOf(model, current.value());
    const auto found = std::find_if(siblings.begin(), siblings.end(),
                                    [&](const Sibling& s) { return matches(s, step); });
    current = found != siblings.end() ? Result<std::u16string>(found->row.key)
                                      : makeRow(model, current.value(), step, siblings);
    if (!current) {
      return current;
    }
  }
  return current;
}

}  // namespace

Result<std::u16string> addTargetPath(DirectoryModel& model, std::u16string_view path) {
  auto parsed = parseFolderPath(path);
  if (!parsed) {
    return Error{parsed.error()};
  }
  std::vector<Step> steps;
  for (auto& name : parsed->folders) {
    steps.push_back(Step{name, std::nullopt});
  }
  return addSteps(model, parsed->property, steps);
}

Result<std::u16string> addSourceTargetPath(DirectoryModel& model, std::u16string_view source,
                                           std::u16string_view target) {
  auto targetPath = parseFolderPath(target);
  if (!targetPath) {
    return Error{targetPath.error()};
  }
  auto sourcePath = parseFolderPath(source);
  if (!sourcePath) {
    return Error{sourcePath.error()};
  }
  if (!sourcePath->property.empty() && sourcePath->property != kSourceDirProperty &&
      sourcePath->property != targetPath->property) {
    return Error{u"the source path starts from \"" + sourcePath->property +
                 u"\", not from the target's folder"};
  }
  const auto& targets = targetPath->folders;
  const auto& sources = sourcePath->folders;
  std::vector<Step> steps;
  for (std::size_t i = 0; i < std::max(targets.size(), sources.size()); ++i) {
    steps.push_back(Step{i < targets.size() ? targets[i] : std::u16string(kParentName),
                         i < sources.size() ? sources[i] : std::u16string(kParentName)});
  }
  return addSteps(model, targetPath->property, steps);
}

}  // namespace odlex::directory
