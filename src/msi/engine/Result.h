#pragma once
// Installer result codes returned by the engine, and the error record kept beside them.

#include <cstdint>
#include <string>

namespace odlex::engine {

enum ResultCode : std::uint32_t {
  kSuccess = 0,
  kFileNotFound = 2,
  kAccessDenied = 5,
  kInvalidHandle = 6,
  kInvalidData = 13,
  kWriteFault = 29,
  kReadFault = 30,
  kInvalidParameter = 87,
  kOpenFailed = 110,
  kBadPathname = 161,
  kAlreadyExists = 183,
  kNoData = 232,
  kNoMoreItems = 259,
  kInvalidHandleState = 1609,
  kBadQuerySyntax = 1615,
  kInvalidField = 1616,
  kInstallPackageInvalid = 1620,
  kTransformFailure = 1624,
  kFunctionFailed = 1627,
  kInvalidTable = 1628,
  kDatatypeMismatch = 1629,
  kCreateFailed = 1631,
};

// One failure: the installer result code and a text saying what went wrong, in terms the
// user can act on (which file, table, row or byte offset).
struct Error {
  std::uint32_t code = kSuccess;
  std::string text;
};

}  // namespace odlex::engine
