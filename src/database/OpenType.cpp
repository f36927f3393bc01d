// ODLEXOpenType: how a database is to be opened (in place, into an output file, or not at all).

#include "odlex/database/ODLEXOpenType.h"

ODLEXOpenType::ODLEXOpenType() : kind_(kOnlyLooking) {}

ODLEXOpenType::ODLEXOpenType(const MSIDatabase::ePersistMode& mode) : kind_(kEnum), mode_(mode) {}

ODLEXOpenType::ODLEXOpenType(const char16_t* outputPath)
    : kind_(kFilePath), outputPath_(std::make_unique<TalString>(outputPath)) {}

ODLEXOpenType::ODLEXOpenType(const ODLEXOpenType& other) : kind_(kOnlyLooking) {
  *this = other;
}

ODLEXOpenType& ODLEXOpenType::operator=(const ODLEXOpenType& other) {
  if (this == &other)
    return *this;
  kind_ = other.kind_;
  mode_ = other.mode_;
  outputPath_ = other.outputPath_ ? std::make_unique<TalString>(*other.outputPath_) : nullptr;
  return *this;
}

ODLEXOpenType::~ODLEXOpenType() = default;

ODLEXOpenType::operator MSIDatabase::ePersistMode() const {
  return kind_ == kEnum ? mode_ : MSIDatabase::ePersistReadOnly;
}

ODLEXOpenType::operator TalString() const {
  return kind_ == kFilePath && outputPath_ ? *outputPath_ : TalString();
}
