// The certificate, signature and file-hash table objects, on a copy of the idt package and,
// for hashes, of the wixl package with a source image laid out for it in the test.

#include <fstream>
#include <map>
#include <sstream>

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

MSIEMsiDigitalCertificate certificateOf(const TalString& key, const std::string& bytes) {
  MSIEMsiDigitalCertificate row(key);
  row.SetCertData(MSIBinary(reinterpret_cast<const unsigned char*>(bytes.data()),
                            static_cast<unsigned long>(bytes.size())));
  return row;
}

MSIEMsiDigitalSignature signatureOf(const TalString& disk, const TalString& certificate) {
  MSIEMsiDigitalSignature row(u"Media", disk);
  row.SetDigitalCertificate(certificate);
  return row;
}

class SignatureTablesTest : public DatabaseTest {};

// Deleting a certificate deletes exactly the live signature rows that name it (a certificate
// whose key differs only in case is another certificate); lookups and their codes.
TEST_F(SignatureTablesTest, CertificatesAndTheirSignatures) {
  ODLEXDatabase& db = openPackage();
  ODLEXTMsiDigitalCertificate& certificates = db.GetMsiDigitalCertificate();
  ODLEXTMsiDigitalSignature& signatures = db.GetMsiDigitalSignature();
  MSIEMsiDigitalCertificate& first = addRow(certificates, certificateOf(u"Cert", "one"));
  MSIEMsiDigitalCertificate& other = addRow(certificates, certificateOf(u"cert", "two"));
  MSIEMsiDigitalSignature& disk1 = addRow(signatures, signatureOf(u"1", u"Cert"));
  MSIEMsiDigitalSignature& disk2 = addRow(signatures, signatureOf(u"2", u"Cert"));
  MSIEMsiDigitalSignature& disk3 = addRow(signatures, signatureOf(u"3", u"cert"));
  MSIEMsiDigitalSignature& gone = addRow(signatures, signatureOf(u"4", u"Cert"));
  signatures.Delete(gone);

  const Lookup lookups[] = {
      {[&] { return &certificates.GetWithDigitalCertificate(u"Cert"); },
       [&] { certificates.GetWithDigitalCertificate(u"CERT"); }, 63, &first},
      {[&] { return &signatures.GetSignatureWithSignedObject(u"Media", u"3"); },
       [&] { signatures.GetSignatureWithSignedObject(u"Media", u"4"); }, 66, &disk3},
      {[&] { return &db.GetMsiFileHash().GetEntryWithFileID(u"Readme"); },
       [&] { db.GetMsiFileHash().GetEntryWithFileID(u"MainExe"); }, 64},
  };
  db.GetMsiFileHash().Add(MSIEMsiFileHash(u"Readme"));
  expectLookups(lookups);
  RWBTree named;
  EXPECT_EQ(itemsOf(signatures.GetEntries(named, first)),
            (std::set<RWCollectable*>{&disk1, &disk2}));

  certificates.Delete(first);
  EXPECT_TRUE(first.IsDeleted());
  EXPECT_TRUE(disk1.IsDeleted());
  EXPECT_TRUE(disk2.IsDeleted());
  EXPECT_FALSE(disk3.IsDeleted());
  EXPECT_FALSE(other.IsDeleted());
}

// A certificate added without a key gets one from the table, and the same bytes added again
// give the same row.
TEST_F(SignatureTablesTest, CertificateWithoutKeyIsStoredOnce) {
  ODLEXTMsiDigitalCertificate& certificates = openPackage().GetMsiDigitalCertificate();
  MSIEMsiDigitalCertificate& added = addRow(certificates, certificateOf(TalString(), "der"));
  EXPECT_EQ(added.GetDigitalCertificate().u16(), u"Certificate1");
  EXPECT_EQ(&addRow(certificates, certificateOf(TalString(), "der")), &added);
  EXPECT_NE(&addRow(certificates, certificateOf(TalString(), "other")), &added);
}

class FileHashTest : public DatabaseTest {
 protected:
  void writeSource(const MSIEFile& file, const std::string& content) {
    const std::filesystem::path path(db_->GetMsiFileHash().GetSourceFile(file).ToUtf8());
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
  }

  void SetUp() override {
    DatabaseTest::SetUp();
    db_ = &openPackage();
    db_->SetSourceRoot(text(dir_ / "source"));
  }

  ODLEXDatabase* db_ = nullptr;
};

// Added when missing; changed only when the file changed; a file that cannot be read gives
// code 50 with its status and changes nothing.
TEST_F(FileHashTest, RefreshAddsThenChangesOnlyWhenTheFileChanged) {
  ODLEXTMsiFileHash& hashes = db_->GetMsiFileHash();
  const MSIEFile& readme = *db_->GetFile().Lookup(u"Readme");
  writeSource(readme, "first");
  hashes.RefreshFileHash(readme);
  const long before = hashes.GetEntry(readme).GetHashPart1();
  ASSERT_TRUE(db_->SaveChanges());
  db_->SetModified(false);

  hashes.RefreshFileHash(readme);
  EXPECT_FALSE(db_->IsModified());
  writeSource(readme, "second");
  hashes.RefreshFileHash(readme);
  EXPECT_TRUE(db_->IsModified());
  EXPECT_NE(hashes.GetEntry(readme).GetHashPart1(), before);

  std::filesystem::remove(hashes.GetSourceFile(readme).ToUtf8());
  try {
    hashes.RefreshFileHash(readme);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const ODLEXDatabaseErrorWithErrorCode& error) {
    EXPECT_EQ(static_cast<ODLEXDatabaseError::eCodeMeaning>(error), 50);
    EXPECT_EQ(static_cast<unsigned int>(error), 2u);
  }
}

// The hashes of every file of the wixl package, each source file given distinct content,
// equal those Python's hashlib gives (MD5, four little-endian signed 32-bit parts).
TEST_F(FileHashTest, HashesOfAWixlPackageMatchPython) {
  ODLEXDatabase& db = openWixl();
  ODLEXTMsiFileHash& hashes = db.GetMsiFileHash();
  std::vector<std::string> paths;
  std::map<std::string, std::string> ours;
  for (RWCollectable* item : db.GetFile().GetEntries()) {
    const auto& file = static_cast<const MSIEFile&>(*item);
    const std::string path = hashes.GetSourceFile(file).ToUtf8();
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << "content of " << file.GetFileID().ToUtf8();
    const MSIEMsiFileHash hash = hashes.GetFileHash(file);
    std::ostringstream parts;
    parts << hash.GetHashPart1() << ' ' << hash.GetHashPart2() << ' ' << hash.GetHashPart3() << ' '
          << hash.GetHashPart4();
    ours[path] = parts.str();
    paths.push_back(path);
  }
  ASSERT_GE(paths.size(), 5u);
  std::vector<std::string> argv = {"python3", "-c",
                                   "import hashlib, struct, sys\n"
                                   "for p in sys.argv[1:]:\n"
                                   "    print(p + '\\t' + ' '.join(map(str, struct.unpack('<4i', "
                                   "hashlib.md5(open(p, 'rb').read()).digest()))))\n"};
  argv.insert(argv.end(), paths.begin(), paths.end());
  const ProcessResult python = runProcess(argv);
  ASSERT_TRUE(python.ok()) << python.describe();
  std::map<std::string, std::string> theirs;
  for (const std::string& line : splitLines(python.out))
    theirs[line.substr(0, line.find('\t'))] = line.substr(line.find('\t') + 1);
  EXPECT_EQ(ours, theirs);
}

}  // namespace
}  // namespace odlex::test
