#include "msi/directory/DirectoryPath.h"

#include <set>

#include "msi/directory/FolderPath.h"
#include "msi/directory/SystemFolders.h"
#include "odlex/support/CaseMapping.h"

namespace odlex::directory {
namespace {

enum class Side { kTarget, kSource };

std::u16string folded(std::u16string text) {
  for (char16_t& c : text) {
    c = FoldCaseChar(c);
  }
  return text;
}

Result<std::u16string> buildPath(const DirectoryModel& model, std::u16string_view key, Side side,
                                 bool forDisplay, bool toRoot, bool shortNames) {
  auto chain = parentChain(model, key);
  if (!chain) {
    return Error{chain.error()};
  }
  std::u16string head;
  std::vector<const FolderNames*> names;
  for (const ChainLink& link : chain.value()) {
    if (side == Side::kSource && link.row.isRoot()) {
      head = kSourceDirProperty;
      break;
    }
    if (side == Side::kTarget && (link.row.isRoot() || (!toRoot && isSystemFolder(link.row.key)))) {
      head = link.row.key;
      break;
    }
    const FolderNames& sideNames =
        side == Side::kTarget ? link.defaultDir.target() : link.defaultDir.source();
    if (!sideNames.isParent()) {
      names.push_back(&sideNames);
    }
  }
  std::u16string path = u"[" + head + u"]";
  for (auto it = names.rbegin(); it != names.rend(); ++it) {
    const std::u16string& name = shortNames ? (*it)->shortName() : (*it)->longName();
    path += (forDisplay ? name : folded(name)) + u"\\";
  }
  return path;
}

}  // namespace

Result<std::vector<ChainLink>> parentChain(const DirectoryModel& model, std::u16string_view key) {
  std::vector<ChainLink> chain;
  std::set<std::u16string, std::less<>> seen;
  std::u16string next(key);
  for (;;) {
    if (!seen.insert(next).second) {
      return Error{u"the parent links of directory \"" + std::u16string(key) +
                   u"\" form a cycle through \"" + next + u"\""};
    }
    if (chain.size() == kMaxDepth) {
      return Error{u"directory \"" + std::u16string(key) + u"\" is nested more than 256 deep"};
    }
    auto row = model.find(next);
    if (!row) {
      return Error{chain.empty() ? u"no directory \"" + next + u"\""
                                 : u"directory \"" + chain.back().row.key +
                                       u"\" has a missing parent \"" + next + u"\""};
    }
    auto defaultDir = DefaultDir::parse(row->defaultDir);
    if (!defaultDir) {
      return Error{u"directory \"" + next + u"\": " + defaultDir.error()};
    }
    chain.push_back(ChainLink{std::move(*row), std::move(defaultDir.value())});
    if (chain.back().row.isRoot()) {
      return chain;
    }
    next = chain.back().row.parent;
  }
}

Result<std::u16string> targetPath(const DirectoryModel& model, std::u16string_view key,
                                  bool forDisplay, bool toRoot, bool shortNames) {
  return buildPath(model, key, Side::kTarget, forDisplay, toRoot, shortNames);
}

Result<std::u16string> sourcePath(const DirectoryModel& model, std::u16string_view key,
                                  bool forDisplay, bool toRoot, bool shortNames) {
  return buildPath(model, key, Side::kSource, forDisplay, toRoot, shortNames);
}

}  // namespace odlex::directory
