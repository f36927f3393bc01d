// The certificate, signature and file-hash table objects, on a copy of the idt package with, for
// hashes, a source image laid out in the test.

#include <fstream>

#include "common/DatabaseTest.h"
#include "common/RowText.h"
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

// Added when missing, with the file's MD5; changed only when the file changed; a file that cannot
// be read gives code 50 with its status and changes nothing.
TEST_F(FileHashTest, RefreshAddsThenChangesOnlyWhenTheFileChanged) {
  ODLEXTMsiFileHash& hashes = db_->GetMsiFileHash();
  const MSIEFile& readme = *db_->GetFile().Lookup(u"Readme");
  writeSource(readme, "added text");
  hashes.RefreshFileHash(readme);
  // MD5 (md5sum: 9eababe8701fda9d8ac0304d4af095d1) as four little-endian signed parts.
  EXPECT_EQ(rowText(hashes.GetEntry(readme)),
            "Readme\t0\t-391402594\t-1646649488\t1295040650\t-778702774");
  ASSERT_TRUE(db_->SaveChanges());
  db_->SetModified(false);

  hashes.RefreshFileHash(readme);
  EXPECT_FALSE(db_->IsModified());
  writeSource(readme, "second");
  hashes.RefreshFileHash(readme);
  EXPECT_TRUE(db_->IsModified());
  EXPECT_NE(hashes.GetEntry(readme).GetHashPart1(), -391402594);

  std::filesystem::remove(hashes.GetSourceFile(readme).ToUtf8());
  try {
    hashes.RefreshFileHash(readme);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const ODLEXDatabaseErrorWithErrorCode& error) {
    EXPECT_EQ(static_cast<ODLEXDatabaseError::eCodeMeaning>(error), 50);
    EXPECT_EQ(static_cast<unsigned int>(error), 2u);
  }
}

}  // namespace
}  // namespace odlex::test
