#pragma once
// The flag word of a table object: read-only (1), not in merge modules (2), only in
// patch-creation files (4). Table objects consult it before modifying or persisting; each table
// class sets its flags when constructed. The word is 32 bits wide on every platform; a wider
// value given to it keeps its low 32 bits.

#include <cstdint>

class ODLEXTableAttributes {
 public:
  enum eAttributeType : std::uint32_t {
    kNoAttributes = 0,
    kReadOnly = 1,
    kNotInMergeModule = 2,
    kOnlyInPcp = 4,
  };

  ODLEXTableAttributes() = default;
  ODLEXTableAttributes(eAttributeType value) : word_(value) {}
  ODLEXTableAttributes(unsigned long value) : word_(static_cast<std::uint32_t>(value)) {}
  ODLEXTableAttributes& operator=(eAttributeType value) {
    word_ = value;
    return *this;
  }
  ODLEXTableAttributes& operator=(unsigned long value) {
    word_ = static_cast<std::uint32_t>(value);
    return *this;
  }

  bool IsReadOnly() const { return (word_ & kReadOnly) != 0; }
  void SetReadOnly(bool on) { set(kReadOnly, on); }
  bool IsNotInMergeModule() const { return (word_ & kNotInMergeModule) != 0; }
  void SetNotInMergeModule(bool on) { set(kNotInMergeModule, on); }
  bool IsOnlyInPcp() const { return (word_ & kOnlyInPcp) != 0; }
  void SetOnlyInPcp(bool on) { set(kOnlyInPcp, on); }

  std::uint32_t GetValue() const { return word_; }
  bool operator==(const ODLEXTableAttributes& other) const { return word_ == other.word_; }
  bool operator!=(const ODLEXTableAttributes& other) const { return word_ != other.word_; }

 private:
  void set(std::uint32_t bit, bool on) { word_ = on ? (word_ | bit) : (word_ & ~bit); }

  std::uint32_t word_ = 0;
};

// The groups of tables that are written together: a table object of a set persists every
// member of its set first. 0 is no set; 1 the tables of a file search (AppSearch, Signature
// and the locator tables).
enum eTableSets : int {
  eNoTableSet = 0,
  eFileSearchTables = 1,
};
