// Commands on file hashes, certificates and signatures: hash (the MsiFileHash values of
// files), hash refresh (recomputes a package's MsiFileHash rows from its source image), cert
// (what a certificate file says) and signature (the Authenticode signature of a PE file or a
// package).

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/signature/MsiDigitalFileSignatureInfo.h>
#include <odlex/signature/MsiDigitalSignatureInfo.h>
#include <odlex/tables/ODLEXTables.h>

#include <array>
#include <cstdio>
#include <filesystem>

#include "Cli.h"
#include "EditCommand.h"
#include "LibraryDatabase.h"
#include "ProgressBar.h"

namespace odlex::cli {

namespace {

using nlohmann::json;

std::array<long, 4> partsOf(const MSIEMsiFileHash& hash) {
  return {hash.GetHashPart1(), hash.GetHashPart2(), hash.GetHashPart3(), hash.GetHashPart4()};
}

// A hash that could not be computed: the file's status (2 no such file, ...) as the error.
[[noreturn]] void failHash(const ODLEXDatabaseError& error, const std::string& file) {
  const auto* withStatus = dynamic_cast<const ODLEXDatabaseErrorWithErrorCode*>(&error);
  throw Failure(
      withStatus ? static_cast<unsigned int>(*withStatus)
                 : static_cast<unsigned int>(static_cast<ODLEXDatabaseError::eCodeMeaning>(error)),
      "cannot hash " + file);
}

void addHash(Commands& commands) {
  struct Options {
    std::vector<std::string> files;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "hash",
      "the MD5 hash of each file as the MsiFileHash table stores it: file, then HashPart1 to "
      "HashPart4 (signed 32-bit numbers), one line per file",
      "odlex hash readme.txt app.ini", [options] {
        // Not required on the parser: "hash refresh" is parsed as this command too.
        if (options->files.empty()) {
          std::fputs("odlex: FILE is required\n", stderr);
          return 2;
        }
        json list = json::array();
        for (const std::string& file : options->files) {
          std::array<long, 4> parts{};
          try {
            parts = partsOf(ODLEXTMsiFileHash::HashFile(TalString::FromUtf8(file), u"File"));
          } catch (const ODLEXDatabaseError& error) {
            failHash(error, file);
          }
          if (options->json) {
            list.push_back({{"file", file}, {"hashParts", parts}});
          } else {
            printLine(file + "\t" + std::to_string(parts[0]) + "\t" + std::to_string(parts[1]) +
                      "\t" + std::to_string(parts[2]) + "\t" + std::to_string(parts[3]));
          }
        }
        if (options->json)
          printJson({{"files", list}});
        return 0;
      });
  command.add_option("FILE", options->files, "the files to hash");
  addJsonFlag(command, options->json, R"({"files": [{"file", "hashParts": [4 numbers]}]})");
}

struct RefreshCounts {
  int added = 0;
  int changed = 0;
  int unchanged = 0;
  int missing = 0;  // no source file under the source folder, or no place in the image
};

// Refreshes the hash of every live unversioned file of `db` whose source file exists.
RefreshCounts refreshHashes(ODLEXDatabase& db) {
  ODLEXTMsiFileHash& hashes = db.GetMsiFileHash();
  const RWBTree files = db.GetFile().GetEntries();
  ProgressBar progress("hash refresh", "files");
  RefreshCounts counts;
  std::size_t done = 0;
  for (RWCollectable* item : files) {
    progress.show(++done, files.entries());
    const auto& file = *static_cast<const MSIEFile*>(item);
    if (file.IsDeleted() || !file.GetVersion().isNull())
      continue;
    std::string source;
    try {
      source = hashes.GetSourceFile(file).ToUtf8();
    } catch (const ODLEXDatabaseError&) {
      // The file's component or folder does not exist: it has no place in the source image.
    }
    if (source.empty() || !std::filesystem::is_regular_file(source)) {
      ++counts.missing;
      continue;
    }
    const MSIEMsiFileHash* before = hashes.Lookup(file.GetFileID());
    const std::optional<std::array<long, 4>> old =
        before ? std::optional(partsOf(*before)) : std::nullopt;
    try {
      hashes.RefreshFileHash(file);
    } catch (const ODLEXDatabaseError& error) {
      failHash(error, source);
    }
    const std::array<long, 4> now = partsOf(hashes.GetEntry(file));
    ++(!old ? counts.added : *old == now ? counts.unchanged : counts.changed);
  }
  return counts;
}

void addHashRefresh(Commands& commands) {
  struct Options : PackageEdit {
    std::string sourceDir;
  };
  auto options = std::make_shared<Options>();
  addEditCommand(
      commands,
      {"hash refresh",
       "recompute the MsiFileHash rows of the unversioned files whose source files are under "
       "the source folder; prints how many rows were added, changed and left unchanged, and "
       "how many files have no source file",
       "odlex hash refresh product.msi --source-dir build/image", "write the changed package here"},
      options, R"({"added", "changed", "unchanged", "missing"})",
      [options](CLI::App& command) {
        command.add_option("--source-dir", options->sourceDir, "the folder [SourceDir] stands for")
            ->required();
      },
      [options](LibrarySession& session, ODLEXDatabase& db) {
        db.SetSourceRoot(TalString::FromUtf8(options->sourceDir));
        const RefreshCounts counts = refreshHashes(db);
        if (counts.added + counts.changed > 0 || !options->edit.output.empty())
          session.save(db);
        if (options->json) {
          printJson({{"added", counts.added},
                     {"changed", counts.changed},
                     {"unchanged", counts.unchanged},
                     {"missing", counts.missing}});
        } else {
          printLine("added\t" + std::to_string(counts.added));
          printLine("changed\t" + std::to_string(counts.changed));
          printLine("unchanged\t" + std::to_string(counts.unchanged));
          printLine("missing\t" + std::to_string(counts.missing));
        }
      });
}

void addCert(Commands& commands) {
  struct Options {
    std::string file;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "cert",
      "what a certificate file (DER or PEM) says: subject, issuer, validity dates (UTC) and "
      "SHA-1 thumbprint, one tab-separated name and value a line",
      "odlex cert signer.cer", [options] {
        MSIBinary file(TalString::FromUtf8(options->file));
        MsiDigitalSignatureInfo info(file);
        if (!info.IsValid())
          throw Failure(static_cast<std::uint32_t>(info.GetError()),
                        options->file + " is no readable certificate");
        const std::pair<const char*, std::string> fields[] = {
            {"subject", info.GetSubject().ToUtf8()},       {"issuer", info.GetIssuer().ToUtf8()},
            {"validFrom", info.GetValidFrom().ToUtf8()},   {"validTo", info.GetValidTo().ToUtf8()},
            {"thumbprint", info.GetThumbprint().ToUtf8()},
        };
        json document = json::object();
        for (const auto& [name, value] : fields) {
          if (options->json)
            document[name] = value;
          else
            printFields({TalString::FromUtf8(name).u16(), TalString::FromUtf8(value).u16()});
        }
        if (options->json)
          printJson(document);
        return 0;
      });
  command.add_option("FILE", options->file, "the certificate file")->required();
  addJsonFlag(command, options->json,
              R"({"subject", "issuer", "validFrom", "validTo", "thumbprint"})");
}

void addSignature(Commands& commands) {
  struct Options {
    std::string file;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "signature",
      "the Authenticode signature of a PE file or a package: whether it carries one, the "
      "signer's subject and issuer, whether the signed hash matches the file (and the signer's "
      "signature holds), and the check's status",
      "odlex signature setup.exe", [options] {
        MsiDigitalFileSignatureInfo info(TalString::FromUtf8(options->file), TalString());
        // A file that cannot be read is a failure, with its status (2 no such file, ...).
        if ((info.GetResult() & 0xFFFF0000ul) == 0x80070000ul)
          throw Failure(static_cast<std::uint32_t>(info.GetResult() & 0xFFFF),
                        "cannot read " + options->file);
        const bool carriesSignature = info.GetCertData().GetSize() > 0;
        char status[16];
        std::snprintf(status, sizeof status, "0x%08lX", info.GetResult());
        if (options->json) {
          printJson({{"signed", carriesSignature},
                     {"subject", info.GetSubject().ToUtf8()},
                     {"issuer", info.GetIssuer().ToUtf8()},
                     {"hashValid", info.IsSigned()},
                     {"status", info.GetResult()}});
          return 0;
        }
        printFields({u"signed", carriesSignature ? u"yes" : u"no"});
        printFields({u"subject", info.GetSubject().u16()});
        printFields({u"issuer", info.GetIssuer().u16()});
        printFields({u"hash", info.IsSigned() ? u"valid" : u"invalid"});
        printFields({u"status", TalString::FromUtf8(status).u16()});
        return 0;
      });
  command.add_option("FILE", options->file, "the PE file or package")->required();
  addJsonFlag(command, options->json, R"({"signed", "subject", "issuer", "hashValid", "status"})");
}

}  // namespace

void addSignatureCommands(Commands& commands) {
  addHash(commands);
  addHashRefresh(commands);
  addCert(commands);
  addSignature(commands);
}

}  // namespace odlex::cli
