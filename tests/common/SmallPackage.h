#pragma once
// A small package written by the lower layer alone, for tests that need a real file but no
// outside tools: ProductName in Property, and one Binary row "Payload".

#include <odlex/msi/MSIDatabase.h>
#include <odlex/msi/MSIRows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace odlex::test {

inline void writeSmallPackage(const std::filesystem::path& path, const std::string& productName,
                              const std::string& payload) {
  MSIDatabase db(TalString::FromUtf8(path.string()), MSIDatabase::ePersistCreate);
  MSITProperty properties;
  properties.SetDatabase(db);
  properties.Add(u"ProductName")->SetValue(TalString::FromUtf8(productName));
  MSITBinary binaries;
  binaries.SetDatabase(db);
  binaries.Add(u"Payload")
      ->SetData(MSIBinary(std::vector<unsigned char>(payload.begin(), payload.end())));
  ASSERT_TRUE(properties.Persist());
  ASSERT_TRUE(binaries.Persist());
  ASSERT_EQ(db.commit(), 0u);
}

}  // namespace odlex::test
