// Writing a package's files: cabinet by cabinet (each read once, the files it holds taken out
// in one pass), then the uncompressed files, then the binary streams.

#include "package/files/FileWriting.h"

#include <stdlib.h>

#include <map>
#include <system_error>

#include "package/cabinet/Cabinet.h"
#include "package/files/PackageFilesState.h"
#include "package/files/SafeName.h"

namespace odlex::package {

namespace {

using engine::Database;

// A file to write and where.
struct Claimed {
  const ODLEXPackageFile* file;
  std::filesystem::path target;
};

// A scratch folder inside the extraction folder (so files move into place without a copy),
// removed with whatever is left in it.
class Scratch {
 public:
  bool create(const std::filesystem::path& root, std::string& error) {
    std::string pattern = (root / ".odlex-extract-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) {
      error = "cannot make a scratch folder in " + root.string();
      return false;
    }
    path_ = pattern;
    return true;
  }
  ~Scratch() {
    std::error_code ignored;
    if (!path_.empty())
      std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// The path of `relative` ('/'-separated) under `folder`, when every name on the way is safe.
bool besidePackage(const std::filesystem::path& folder, std::u16string_view relative,
                   std::filesystem::path& out) {
  out = folder;
  for (std::size_t start = 0;;) {
    const std::size_t slash = relative.find(u'/', start);
    const std::u16string_view name = relative.substr(start, slash - start);
    if (!odlex::package::isSafeName(name))
      return false;
    out /= TalString(std::u16string(name)).ToUtf8();
    if (slash == std::u16string_view::npos)
      return true;
    start = slash + 1;
  }
}

class Extraction {
 public:
  // `folder` is where the package lies.
  Extraction(const Database& database, std::filesystem::path folder,
             std::vector<TalError>& problems)
      : database_(database), folder_(std::move(folder)), problems_(problems) {}

  // Takes the files of one cabinet out.
  void fromCabinet(const ODLEXPackageFile& first, const std::vector<Claimed>& files,
                   const std::filesystem::path& scratch) {
    std::shared_ptr<const storage::StreamSource> source;
    std::string error;
    const std::u16string name = first.cabinet.u16();
    if (first.source == ODLEXFileSource::kEmbeddedCabinet) {
      engine::Error failure;
      source = database_.streamSource(name, failure);
      error = failure.text;
    } else {
      std::filesystem::path file;
      if (!besidePackage(folder_, name, file))
        error = "the cabinet name is not a plain file name";
      else
        source = storage::fileSource(storage::FileSystem::current(), file, error);
    }
    std::unique_ptr<odlex::package::CabinetReader> reader;
    if (source)
      reader = odlex::package::CabinetReader::open(source, error);
    if (!reader) {
      for (const Claimed& claimed : files)
        problems_.push_back(problem(engine::kFileNotFound, claimed.file->key,
                                    "cabinet " + first.cabinet.ToUtf8() + ": " + error));
      return;
    }
    std::map<std::string, const Claimed*> byMember;
    for (const Claimed& claimed : files)
      byMember.emplace(claimed.file->key.ToUtf8(), &claimed);
    std::map<std::size_t, const Claimed*> chosen;
    const auto& members = reader->members();
    const bool done = reader->extract(
        scratch,
        [&](std::size_t member) {
          const auto found = byMember.find(members[member].name);
          if (found == byMember.end())
            return false;
          chosen.emplace(member, found->second);
          byMember.erase(found);
          return true;
        },
        [&](std::size_t member, const std::filesystem::path& file, std::string&) {
          deliver(*chosen.at(member), file, members[member].size);
          return true;
        },
        error);
    if (!done)
      problems_.push_back(problem(engine::kInvalidData, first.cabinet, error));
    for (const auto& [member, claimed] : byMember)
      problems_.push_back(problem(engine::kFileNotFound, claimed->file->key,
                                  "not in cabinet " + first.cabinet.ToUtf8()));
  }

  void uncompressed(const Claimed& claimed) {
    std::filesystem::path file;
    std::string error;
    if (!besidePackage(folder_, claimed.file->sourcePath.u16(), file)) {
      problems_.push_back(problem(engine::kBadPathname, claimed.file->key,
                                  "the source path \"" + claimed.file->sourcePath.ToUtf8() +
                                      "\" could lead outside the package's folder"));
      return;
    }
    std::shared_ptr<const storage::StreamSource> source =
        storage::fileSource(storage::FileSystem::current(), file, error);
    if (!source) {
      problems_.push_back(problem(engine::kFileNotFound, claimed.file->key, error));
      return;
    }
    if (!sizeMatches(claimed, source->size()))
      return;
    write(claimed.file->key, claimed.target, *source);
  }

  void stream(const std::u16string& name, const std::filesystem::path& target) {
    engine::Error failure;
    std::shared_ptr<const storage::StreamSource> source = database_.streamSource(name, failure);
    if (!source)
      problems_.push_back(problem(failure.code, TalString(name), failure.text));
    else
      write(TalString(name), target, *source);
  }

 private:
  bool sizeMatches(const Claimed& claimed, std::uint64_t size) {
    if (static_cast<std::int64_t>(size) == claimed.file->size)
      return true;
    problems_.push_back(problem(engine::kInvalidData, claimed.file->key,
                                "its bytes are " + std::to_string(size) +
                                    " long, the File table says " +
                                    std::to_string(claimed.file->size)));
    return false;
  }

  void deliver(const Claimed& claimed, const std::filesystem::path& file, std::uint64_t size) {
    std::string error;
    if (sizeMatches(claimed, size) && !ExtractRoot::place(file, claimed.target, error))
      problems_.push_back(problem(engine::kWriteFault, claimed.file->key, error));
  }

  void write(const TalString& what, const std::filesystem::path& target,
             const storage::StreamSource& source) {
    std::string error;
    storage::NewFileOptions options;
    options.exclusive = true;
    options.flush = false;
    if (!storage::writeStreamToFile(storage::FileSystem::current(), target, source, options, error))
      problems_.push_back(problem(engine::kWriteFault, what, error));
  }

  const Database& database_;
  const std::filesystem::path folder_;
  std::vector<TalError>& problems_;
};

}  // namespace

void writeFiles(const engine::Database& database, const std::filesystem::path& folder,
                ExtractRoot& root, const std::vector<ChosenFile>& chosen,
                std::vector<TalError>& problems) {
  std::string error;
  Scratch scratch;
  if (!scratch.create(root.path(), error)) {
    problems.push_back(
        problem(engine::kCreateFailed, TalString::FromUtf8(root.path().string()), error));
    return;
  }
  std::map<std::pair<ODLEXFileSource, std::u16string>, std::vector<Claimed>> byCabinet;
  std::vector<Claimed> uncompressed;
  for (const auto& [file, relative] : chosen) {
    if (relative.empty()) {
      problems.push_back(
          problem(engine::kBadPathname, file->key,
                  "its directory " + file->directory.ToUtf8() + " cannot be resolved"));
      continue;
    }
    Claimed claimed{file, {}};
    if (const std::uint32_t code = root.claim(relative, claimed.target, error)) {
      problems.push_back(problem(code, file->key, error));
      continue;
    }
    if (file->source == ODLEXFileSource::kUncompressed)
      uncompressed.push_back(claimed);
    else
      byCabinet[{file->source, file->cabinet.u16()}].push_back(claimed);
  }
  Extraction extraction(database, folder, problems);
  for (const auto& [cabinet, files] : byCabinet) {
    if (cabinet.second.empty()) {
      for (const Claimed& claimed : files)
        problems.push_back(problem(engine::kFileNotFound, claimed.file->key,
                                   "no Media row with a cabinet covers its sequence number"));
      continue;
    }
    extraction.fromCabinet(*files.front().file, files, scratch.path());
  }
  for (const Claimed& claimed : uncompressed)
    extraction.uncompressed(claimed);
}

void writeBinaryStreams(const engine::Database& database, const std::filesystem::path& folder,
                        ExtractRoot& root, std::vector<TalError>& problems) {
  Extraction extraction(database, folder, problems);
  std::string error;
  for (const std::u16string& name : database.streamNames()) {
    for (std::u16string_view table : {u"Binary", u"Icon"}) {
      const std::u16string prefix = std::u16string(table) + u".";
      if (!name.starts_with(prefix))
        continue;
      std::filesystem::path target;
      const std::uint32_t code =
          root.claim(std::u16string(table) + u"/" + name.substr(prefix.size()), target, error);
      if (code == engine::kSuccess)
        extraction.stream(name, target);
      else
        problems.push_back(problem(code, TalString(name), error));
    }
  }
}

}  // namespace odlex::package
