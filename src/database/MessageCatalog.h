#pragma once
// The messages the change log is written with, by number, and how a message is formatted with
// its inserts.
//
// A catalog is read from either of two kinds of file:
//   - a Windows module (a PE file: DLL or executable) with a message-table resource, read as
//     data: nothing in it is run;
//   - a UTF-8 text file, one message per line as "ID = text": the ID decimal or "0x" hex (at most
//     32 bits), spaces around the "=" and at the end of the line dropped; empty lines and lines
//     starting with "#" are skipped. An ID given twice, or a line of another shape, makes the
//     file no catalog.
// Trailing line breaks of a message are dropped, so both kinds format alike.

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "odlex/support/TalString.h"

namespace odlex::database {

class MessageCatalog {
 public:
  // The catalog in `bytes` (a module when they start with "MZ", a text otherwise); nothing, with
  // the reason in `why`, when they are neither.
  static std::optional<MessageCatalog> Parse(std::span<const unsigned char> bytes,
                                             std::string& why);
  static std::optional<MessageCatalog> ParseText(std::string_view text, std::string& why);
  static std::optional<MessageCatalog> ParseModule(std::span<const unsigned char> image,
                                                   std::string& why);

  // Message `id` formatted with `inserts` (FormatMessageText); nothing when there is no such
  // message.
  std::optional<std::u16string> Format(std::uint32_t id,
                                       std::span<const std::u16string> inserts) const;
  std::size_t size() const { return messages_.size(); }

 private:
  std::map<std::uint32_t, std::u16string> messages_;
};

// The bytes of the catalog file at `path`; nothing, with the reason in `why`, when it cannot be
// read or is larger than any catalog (16 MiB).
std::optional<std::string> readCatalogFile(const TalString& path, std::string& why);

// `text` with its escapes replaced, following the installer platform's message rules:
//   %1 .. %99        the insert of that number (1-based), not formatted again; a "!fmt!" that
//                    follows (a printf conversion) is dropped, as every insert is a text. An
//                    insert number beyond those given stays as written.
//   %0               ends the message here;
//   %n  %r  %t       a line break ("\r\n"), a carriage return, a tab;
//   %% %. %! %space  the character itself; a "%" before any other character is dropped, and so
//                    is a "%" that ends the text.
// Runs in time and space linear in the text and the inserts it names.
std::u16string FormatMessageText(std::u16string_view text, std::span<const std::u16string> inserts);

}  // namespace odlex::database
