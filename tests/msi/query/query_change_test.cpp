// Statements that change the database, run on a database built in memory: parameters in every
// place a value goes, temporary data, holds, and the result codes of faulty statements.

#include <gtest/gtest.h>

#include <odlex/support/Utf8.h>

#include <string>
#include <vector>

#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/query/Query.h"
#include "msi/query/QueryText.h"
#include "storage/FileSystem.h"

namespace odlex::query {
namespace {

class QueryChange : public ::testing::Test {
 protected:
  void SetUp() override {
    open(engine::Database::OpenMode::kCreate);
    for (const char* sql :
         {"CREATE TABLE Item (Key CHAR(72) NOT NULL, Name CHAR(64), Size LONG, "
          "Flags SHORT PRIMARY KEY Key)",
          "INSERT INTO Item (Key, Name, Size, Flags) VALUES ('a', 'Alpha', 10, 1)",
          "INSERT INTO Item (Key, Name, Size) VALUES ('b', 'beta', 300)",
          "INSERT INTO Item (Key, Flags) VALUES ('c', 2)"}) {
      ASSERT_EQ(run(sql), "ok") << sql;
    }
  }

  void open(engine::Database::OpenMode mode) {
    engine::Error error;
    db_ = engine::Database::open(storage::FileSystem::real(), dir_ / "test.msi", mode, error);
    ASSERT_TRUE(db_) << error.text;
  }

  void saveAndReopen() {
    engine::Error error;
    ASSERT_EQ(db_->commit(error), engine::kSuccess) << error.text;
    db_.reset();
    open(engine::Database::OpenMode::kUpdate);
  }

  // "ok", the rows of a SELECT (fields joined with '|'), or "error N" with the code of the
  // prepare or execute that failed.
  std::vector<std::string> outcome(std::string_view sql, const std::vector<Field>& parameters) {
    engine::Error error;
    auto query = Query::prepare(*db_, utf16(sql), error);
    if (!query)
      return {"error " + std::to_string(error.code)};
    if (query->execute(parameters, error) != engine::kSuccess)
      return {"error " + std::to_string(error.code)};
    if (query->changes())
      return {"ok"};
    std::vector<std::string> rows;
    for (Record record; query->fetch(record) == engine::kSuccess;)
      rows.push_back(show(record));
    return rows;
  }

  std::string run(std::string_view sql, const std::vector<Field>& parameters = {}) {
    const std::vector<std::string> result = outcome(sql, parameters);
    return result.size() == 1 ? result[0] : "rows";
  }

  // Every stream of the database as name=bytes, the bytes in decimal.
  std::vector<std::string> streams() {
    std::vector<std::string> out;
    for (const std::u16string& name : db_->streamNames()) {
      std::vector<std::uint8_t> data;
      engine::Error error;
      EXPECT_TRUE(db_->readStream(name, data, error)) << error.text;
      std::string bytes;
      for (std::uint8_t byte : data)
        bytes += std::to_string(byte);
      out.push_back(Utf16ToUtf8(name) + "=" + bytes);
    }
    return out;
  }

  test::TempDir dir_;
  std::unique_ptr<engine::Database> db_;
};

struct ParameterCase {
  const char* sql;
  std::vector<Field> parameters;
  std::vector<std::string> items;  // SELECT * FROM Item ORDER BY Key afterwards
};

TEST_F(QueryChange, ParametersStandForEveryValue) {
  const ParameterCase cases[] = {
      {"INSERT INTO Item (Key, Name, Size, Flags) VALUES (?, ?, ?, ?)",
       {Field::ofString(u"d"), Field::ofString(u"Delta"), Field::ofInteger(-7), Field::null()},
       {"a|Alpha|10|1", "b|beta|300|null", "c|null|null|2", "d|Delta|-7|null"}},
      {"UPDATE Item SET Name = ?, Size = ? WHERE Key = ? OR Size > ?",
       {Field::ofString(u"Zed"), Field::null(), Field::ofString(u"a"), Field::ofInteger(100)},
       {"a|Zed|null|1", "b|Zed|null|null", "c|null|null|2"}},
      {"UPDATE Item SET Flags = 9 WHERE Name = ?",
       {Field::null()},
       {"a|Alpha|10|1", "b|beta|300|null", "c|null|null|9"}},
      {"DELETE FROM Item WHERE Size < ? OR Key = ?",
       {Field::ofInteger(100), Field::ofString(u"c")},
       {"b|beta|300|null"}},
  };
  for (const ParameterCase& c : cases) {
    SetUp();
    ASSERT_EQ(run(c.sql, c.parameters), "ok") << c.sql;
    EXPECT_EQ(outcome("SELECT * FROM Item ORDER BY Key", {}), c.items) << c.sql;
  }
}

struct StreamCase {
  const char* sql;
  std::vector<Field> parameters;
  std::vector<std::string> streams;  // name=bytes of every stream afterwards
};

// A stream parameter gives a binary cell a copy of that stream; clearing or deleting the cell
// removes the row's stream.
TEST_F(QueryChange, BinaryCellsTakeCopiesOfStreams) {
  const StreamCase cases[] = {
      {"INSERT INTO Blob (K, D) VALUES ('b', ?)",
       {Field::ofStream(u"Blob.a")},
       {"Blob.a=123", "Blob.b=123", "Other=45"}},
      {"UPDATE Blob SET D = ? WHERE K = 'a'",
       {Field::ofStream(u"Other")},
       {"Blob.a=45", "Other=45"}},
      {"UPDATE Blob SET D = ''", {}, {"Other=45"}},
      {"DELETE FROM Blob", {}, {"Other=45"}},
      {"INSERT INTO Blob (K, D) VALUES ('b', ?)", {Field::ofStream(u"Missing")}, {"error 1627"}},
      {"INSERT INTO Blob (K, D) VALUES ('b', ?)", {Field::ofString(u"text")}, {"error 1629"}},
      {"INSERT INTO Blob (K, D) VALUES ('b', 'text')", {}, {"error 1615"}},
  };
  for (const StreamCase& c : cases) {
    SetUp();
    db_->setStream(u"Other", {4, 5});
    ASSERT_EQ(run("CREATE TABLE Blob (K CHAR(9) NOT NULL, D OBJECT PRIMARY KEY K)"), "ok");
    db_->setStream(u"Blob.a", {1, 2, 3});
    ASSERT_EQ(run("INSERT INTO Blob (K, D) VALUES ('a', ?)", {Field::ofStream(u"Blob.a")}), "ok");
    const std::string result = run(c.sql, c.parameters);
    EXPECT_EQ(result == "ok" ? streams() : std::vector<std::string>{result}, c.streams) << c.sql;
  }
}

struct LifetimeCase {
  std::vector<const char*> statements;
  const char* probe;
  std::vector<std::string> inMemory;  // the probe's outcome after the statements
  std::vector<std::string> saved;     // and after saving and opening the database again
};

TEST_F(QueryChange, TemporaryDataLivesInMemoryUntilItsLastHoldIsFreed) {
  const LifetimeCase cases[] = {
      {{"INSERT INTO Item (Key) VALUES ('t') TEMPORARY", "INSERT INTO Item (Key) VALUES ('u')"},
       "SELECT Key FROM Item WHERE Key > 'c'",
       {"t", "u"},
       {"u"}},
      {{"CREATE TABLE Scratch (K CHAR(9) TEMPORARY, V SHORT PRIMARY KEY K)",
        "INSERT INTO Scratch (K, V) VALUES ('k', 1)"},
       "SELECT * FROM Scratch",
       {"k|1"},
       {"error 1628"}},
      {{"ALTER TABLE Item ADD Note CHAR(9) TEMPORARY",
        "UPDATE Item SET Note = 'n' WHERE Key = 'a'"},
       "SELECT Note FROM Item WHERE Key = 'a'",
       {"n"},
       {"error 1615"}},
      {{"CREATE TABLE Scratch (K CHAR(9) TEMPORARY PRIMARY KEY K) HOLD", "ALTER TABLE Scratch HOLD",
        "ALTER TABLE Scratch FREE"},
       "SELECT Name FROM _Tables WHERE Name = 'Scratch'",
       {"Scratch"},
       {}},
      {{"CREATE TABLE Scratch (K CHAR(9) TEMPORARY PRIMARY KEY K) HOLD",
        "ALTER TABLE Scratch FREE"},
       "SELECT Name FROM _Tables WHERE Name = 'Scratch'",
       {},
       {}},
      {{"ALTER TABLE Item ADD Note CHAR(9) TEMPORARY HOLD", "ALTER TABLE Item ADD Kept SHORT",
        "ALTER TABLE Item FREE", "UPDATE Item SET Kept = 4 WHERE Key = 'a'"},
       "SELECT * FROM Item WHERE Key = 'a'",
       {"a|Alpha|10|1|4"},
       {"a|Alpha|10|1|4"}},
  };
  for (const LifetimeCase& c : cases) {
    SetUp();
    for (const char* sql : c.statements)
      ASSERT_EQ(run(sql), "ok") << sql;
    EXPECT_EQ(outcome(c.probe, {}), c.inMemory) << c.statements.front();
    saveAndReopen();
    EXPECT_EQ(outcome(c.probe, {}), c.saved) << c.statements.front();
  }
}

struct BadCase {
  const char* sql;
  std::vector<Field> parameters;
  std::uint32_t code;
};

TEST_F(QueryChange, BadStatementsGiveTheInstallersResultCodes) {
  const BadCase cases[] = {
      {"INSERT INTO Item (Key) VALUES ('a')", {}, engine::kFunctionFailed},
      {"INSERT INTO Item (Name) VALUES ('n')", {}, engine::kFunctionFailed},
      {"INSERT INTO Item (Key, Flags) VALUES ('z', 32768)", {}, engine::kFunctionFailed},
      {"INSERT INTO Item (Key, Name) VALUES ('z')", {}, engine::kBadQuerySyntax},
      {"INSERT INTO Item (Key, Key) VALUES ('z', 'y')", {}, engine::kBadQuerySyntax},
      {"INSERT INTO Item (Key, Nope) VALUES ('z', 1)", {}, engine::kBadQuerySyntax},
      {"INSERT INTO Item (Key, Size) VALUES ('z', 'big')", {}, engine::kBadQuerySyntax},
      {"INSERT INTO Item (Key) VALUES (NULL)", {}, engine::kBadQuerySyntax},
      {"INSERT INTO Nope (A) VALUES (1)", {}, engine::kInvalidTable},
      {"INSERT INTO Item (Key, Size) VALUES (?, ?)",
       {Field::ofString(u"z"), Field::ofString(u"big")},
       engine::kDatatypeMismatch},
      {"INSERT INTO Item (Key) VALUES (?)", {}, engine::kInvalidField},
      {"UPDATE Item SET Key = 'q'", {}, engine::kFunctionFailed},
      {"UPDATE Item SET Name = 'x' WHERE Key = 1", {}, engine::kBadQuerySyntax},
      {"UPDATE Item SET Size = ?", {Field::ofString(u"x")}, engine::kDatatypeMismatch},
      {"UPDATE Item Name = 'x'", {}, engine::kBadQuerySyntax},
      {"DELETE FROM _Tables", {}, engine::kInvalidTable},
      {"DELETE Item", {}, engine::kBadQuerySyntax},
      {"CREATE TABLE Item (Key CHAR(72) PRIMARY KEY Key)", {}, engine::kAlreadyExists},
      {"CREATE TABLE _Streams (A CHAR PRIMARY KEY A)", {}, engine::kFunctionFailed},
      {"CREATE TABLE T (A CHAR(72))", {}, engine::kBadQuerySyntax},
      {"CREATE TABLE T (A CHAR(72), A SHORT PRIMARY KEY A)", {}, engine::kBadQuerySyntax},
      {"CREATE TABLE T (A CHAR(72) PRIMARY KEY B)", {}, engine::kBadQuerySyntax},
      {"CREATE TABLE T (A CHAR(256) PRIMARY KEY A)", {}, engine::kBadQuerySyntax},
      {"CREATE TABLE T (A SHORT LOCALIZABLE PRIMARY KEY A)", {}, engine::kBadQuerySyntax},
      {"CREATE TABLE T (A VARCHAR PRIMARY KEY A)", {}, engine::kBadQuerySyntax},
      {"CREATE TABLE T (A CHAR(9), B CHAR(9) TEMPORARY PRIMARY KEY A, B)",
       {},
       engine::kFunctionFailed},
      {"DROP TABLE Nope", {}, engine::kInvalidTable},
      {"DROP Item", {}, engine::kBadQuerySyntax},
      {"ALTER TABLE Item ADD Name SHORT", {}, engine::kFunctionFailed},
      {"ALTER TABLE Item ADD Extra SHORT NOT NULL", {}, engine::kFunctionFailed},
      {"ALTER TABLE Item FREE", {}, engine::kFunctionFailed},
      {"ALTER TABLE Nope HOLD", {}, engine::kInvalidTable},
      {"ALTER TABLE Item DROP Name", {}, engine::kBadQuerySyntax},
  };
  for (const BadCase& c : cases) {
    SetUp();
    EXPECT_EQ(run(c.sql, c.parameters), "error " + std::to_string(c.code)) << c.sql;
    EXPECT_EQ(outcome("SELECT * FROM Item ORDER BY Key", {}),
              (std::vector<std::string>{"a|Alpha|10|1", "b|beta|300|null", "c|null|null|2"}))
        << c.sql << " changed the table";
  }
}

}  // namespace
}  // namespace odlex::query
