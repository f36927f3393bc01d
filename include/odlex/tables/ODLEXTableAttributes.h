#pragma once
// The flag word of a table object: read-only (1), not in merge modules (2), only in
// patch-creation files (4). Table objects consult it before modifying or persisting; each table
// class sets its flags when constructed.

class ODLEXTableAttributes {
 public:
  enum eAttributeType : unsigned long {
    kNoAttributes = 0,
    kReadOnly = 1,
    kNotInMergeModule = 2,
    kOnlyInPcp = 4,
  };

  ODLEXTableAttributes() = default;
  ODLEXTableAttributes(eAttributeType value) : word_(value) {}
  ODLEXTableAttributes(unsigned long value) : word_(value) {}
  ODLEXTableAttributes& operator=(eAttributeType value) {
    word_ = value;
    return *this;
  }
  ODLEXTableAttributes& operator=(unsigned long value) {
    word_ = value;
    return *this;
  }

  bool IsReadOnly() const { return (word_ & kReadOnly) != 0; }
  void SetReadOnly(bool on) { set(kReadOnly, on); }
  bool IsNotInMergeModule() const { return (word_ & kNotInMergeModule) != 0; }
  void SetNotInMergeModule(bool on) { set(kNotInMergeModule, on); }
  bool IsOnlyInPcp() const { return (word_ & kOnlyInPcp) != 0; }
  void SetOnlyInPcp(bool on) { set(kOnlyInPcp, on); }

  unsigned long GetValue() const { return word_; }
  bool operator==(const ODLEXTableAttributes& other) const { return word_ == other.word_; }
  bool operator!=(const ODLEXTableAttributes& other) const { return word_ != other.word_; }

 private:
  void set(unsigned long bit, bool on) { word_ = on ? (word_ | bit) : (word_ & ~bit); }

  unsigned long word_ = 0;
};

// The groups of tables that are written together: a table object of a set persists every
// member of its set first. 0 is no set; 1 the tables of a file search (AppSearch, Signature
// and the locator tables).
enum eTableSets : int {
  eNoTableSet = 0,
  eFileSearchTables = 1,
};
