// The hash, hash refresh, cert and signature commands: what refresh writes (read back with
// msitools) against what `hash` prints for the same files, and the fields of cert and
// signature. The hashing and signature rules are the library's and are tested there.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/tables/ODLEXTables.h>

#include <fstream>
#include <set>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"
#include "common/TestCertificates.h"

namespace odlex::test {
namespace {

using nlohmann::json;

// Writes a source file for every file of `package` under `sourceDir`, except `skipped`;
// returns FileID -> source path of those written.
std::map<std::string, std::string> writeSourceImage(const std::filesystem::path& package,
                                                    const std::filesystem::path& sourceDir,
                                                    const std::string& skipped) {
  ODLEXDatabase::INIT();
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(TalString::FromUtf8(package.string()));
  db.SetSourceRoot(TalString::FromUtf8(sourceDir.string()));
  std::map<std::string, std::string> sources;
  for (RWCollectable* item : db.GetFile().GetEntries()) {
    const auto& file = static_cast<const MSIEFile&>(*item);
    const std::string id = file.GetFileID().ToUtf8();
    const std::string path = db.GetMsiFileHash().GetSourceFile(file).ToUtf8();
    if (id == skipped || !file.GetVersion().isNull())
      continue;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << "source of " << id;
    sources[id] = path;
  }
  ODLEXDatabase::KillDatabaseList();
  return sources;
}

// wixl stores a hash for every file; refresh replaces those of the files with a source file by
// what `hash` prints for that file and keeps the others; a second refresh changes nothing and
// leaves the package as it was.
TEST(OdlexSignatureCommands, HashRefreshStoresWhatHashPrints) {
  TempDir dir;
  const BuiltPackage& built = testPackage(PackageKind::kWixl);
  ASSERT_FALSE(built.file.empty()) << built.error;
  const std::filesystem::path package = dir / "product.msi";
  std::filesystem::copy_file(built.file, package);
  const std::map<std::string, std::string> sources =
      writeSourceImage(package, dir / "image", "Readme");
  ASSERT_GE(sources.size(), 3u);

  const json first = json::parse(
      odlexOutput({"hash", "refresh", package.string(), "--source-dir", (dir / "image").string(),
                   "-o", (dir / "out.msi").string(), "--json"}));
  EXPECT_EQ(first,
            (json{{"added", 0}, {"changed", sources.size()}, {"unchanged", 0}, {"missing", 1}}));
  std::set<std::string> expected;
  for (const std::string& row : msiinfoRows(package, "MsiFileHash")) {
    if (row.starts_with("Readme\t"))
      expected.insert(row);
  }
  for (const auto& [id, path] : sources) {
    const std::string line = splitLines(odlexOutput({"hash", path})).at(0);
    expected.insert(id + "\t0" + line.substr(line.find('\t')));
  }
  const std::vector<std::string> rows = msiinfoRows(dir / "out.msi", "MsiFileHash");
  EXPECT_EQ(std::set<std::string>(rows.begin(), rows.end()), expected);

  const std::string before = readFileBytes(dir / "out.msi");
  EXPECT_EQ(
      odlexOutput({"hash", "refresh", (dir / "out.msi").string(), "--source-dir",
                   (dir / "image").string()}),
      "added\t0\nchanged\t0\nunchanged\t" + std::to_string(sources.size()) + "\nmissing\t1\n");
  EXPECT_EQ(readFileBytes(dir / "out.msi"), before);
}

// The fields of cert and signature; a file that cannot be read fails each command with its
// status.
TEST(OdlexSignatureCommands, CertAndSignatureFields) {
  TempDir dir;
  const TestCertificate signer = makeCertificate(dir.path(), "signer", "/O=Example/CN=Signer");
  const BuiltPackage& built = testPackage(PackageKind::kWixl);
  ASSERT_FALSE(built.file.empty()) << built.error;
  const std::filesystem::path signedPackage = dir / "signed.msi";
  ASSERT_TRUE(
      runProcess({"osslsigncode", "sign", "-certs", signer.pem.string(), "-key",
                  signer.key.string(), "-in", built.file.string(), "-out", signedPackage.string()})
          .ok());

  const json cert = json::parse(odlexOutput({"cert", signer.pem.string(), "--json"}));
  EXPECT_EQ(cert["subject"], "O=Example; CN=Signer");
  EXPECT_EQ(cert["issuer"], "O=Example; CN=Signer");
  EXPECT_EQ(cert["thumbprint"].get<std::string>().size(), 40u);
  EXPECT_EQ(cert["validFrom"].get<std::string>().back(), 'Z');
  EXPECT_EQ(json::parse(odlexOutput({"signature", signedPackage.string(), "--json"})),
            (json{{"signed", true},
                  {"subject", "O=Example; CN=Signer"},
                  {"issuer", "O=Example; CN=Signer"},
                  {"hashValid", true},
                  {"status", 0}}));
  EXPECT_EQ(odlexOutput({"signature", built.file.string()}),
            "signed\tno\nsubject\t\nissuer\t\nhash\tinvalid\nstatus\t0x800B0100\n");
  const std::string missing = (dir / "missing").string();
  const std::pair<std::string, std::string> failures[] = {
      {"cert", missing + " is no readable certificate (error 2)"},
      {"signature", "cannot read " + missing + " (error 2)"},
      {"hash", "cannot hash " + missing + " (error 2)"},
  };
  for (const auto& [command, message] : failures) {
    const ProcessResult failed = runOdlex({command, missing});
    EXPECT_EQ(failed.exitCode, 1) << command;
    EXPECT_EQ(failed.err, "odlex: " + message + "\n");
  }
}

}  // namespace
}  // namespace odlex::test
