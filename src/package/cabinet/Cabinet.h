#pragma once
// Cabinet files (.cab), the containers an installer package keeps its files in, read and
// written through libgcab. Reading takes cabinets compressed with MSZIP or LZX, or stored;
// writing makes MSZIP cabinets with one folder.
//
// Cabinets come from packages, which may be hostile: the names stored in a cabinet are never
// used as paths. A member is extracted into a file the caller names, and only after it has been
// decompressed, whole and of the size its entry gives, under a name made here.
//
// Neither direction holds a cabinet in memory: reading pulls the compressed data from its source
// a piece at a time as it is decompressed, and writing reads each member's file and appends the
// compressed blocks to the output as they are made.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "storage/CompoundFile.h"

namespace odlex::package {

// One file of a cabinet, as its entry describes it.
struct CabinetMember {
  std::string name;  // as stored: in a package's cabinet, the File table's key
  std::uint32_t size = 0;
  std::uint32_t attributes = 0;  // read-only 1, hidden 2, system 4, archive 0x20, ...
};

class CabinetReader {
 public:
  // Reads the header, folders and file entries of the cabinet in `source`. Null with the reason
  // when it is no cabinet or its entries are damaged.
  static std::unique_ptr<CabinetReader> open(std::shared_ptr<const storage::StreamSource> source,
                                             std::string& error);
  ~CabinetReader();
  CabinetReader(const CabinetReader&) = delete;
  CabinetReader& operator=(const CabinetReader&) = delete;

  // The members in the order of their entries (names may repeat in a hostile cabinet).
  const std::vector<CabinetMember>& members() const { return members_; }

  // Called once a member has been decompressed into `file` (in the scratch folder). Moves or
  // copies the file where it belongs, or leaves it; false with a reason stops the extraction.
  using Take = std::function<bool(std::size_t member, const std::filesystem::path& file,
                                  std::string& error)>;

  // Decompresses the members whose indexes `wanted` returns true for, each into a new file of
  // the existing folder `scratch`, and hands every file to `take`. Files left in `scratch` are
  // the caller's to remove. False with the reason when the data is damaged, a member's data does
  // not have the size of its entry, or `take` fails.
  bool extract(const std::filesystem::path& scratch,
               const std::function<bool(std::size_t member)>& wanted, const Take& take,
               std::string& error);

 private:
  struct Handles;
  explicit CabinetReader(std::unique_ptr<Handles> handles);
  std::unique_ptr<Handles> handles_;
  std::vector<CabinetMember> members_;
};

// Collects members and writes them as one MSZIP cabinet.
class CabinetWriter {
 public:
  // The largest member: what one cabinet folder can hold.
  static constexpr std::uint64_t kMaxMemberSize = 0x7FFF8000;

  // Adds the member `name` whose bytes are those of `file`, read when the cabinet is written.
  void add(std::string name, std::filesystem::path file);
  std::size_t size() const { return members_.size(); }

  // Writes the cabinet, members in the order they were added, to the new file `out` (replacing
  // one that is there). False with the reason when a member cannot be read, is too large, or the
  // output cannot be written; a partly written `out` is the caller's to remove.
  bool write(const std::filesystem::path& out, std::string& error) const;

 private:
  struct Member {
    std::string name;
    std::filesystem::path file;
  };
  std::vector<Member> members_;
};

}  // namespace odlex::package
