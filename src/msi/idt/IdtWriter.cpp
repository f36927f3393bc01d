#include "msi/idt/IdtWriter.h"

#include "msi/engine/TypeWord.h"
#include "msi/idt/TextCodec.h"
#include "msi/idt/TextEscape.h"

namespace odlex::idt {

bool IdtWriter::appendLine(std::string& out, const std::vector<std::u16string_view>& values,
                           std::string& reason) const {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0)
      out += '\t';
    if (!encodeText(codePage_, escapeValue(values[i]), out, reason))
      return false;
  }
  out += "\r\n";
  return true;
}

bool IdtWriter::writeHeader(const std::vector<engine::Column>& columns, std::u16string_view table,
                            std::string& reason) {
  std::vector<std::u16string_view> names;
  std::vector<std::u16string> types;
  std::vector<std::u16string_view> tableLine{table};
  for (const engine::Column& column : columns) {
    names.push_back(column.name);
    const std::string word = engine::typeWord(column.type);
    types.emplace_back(word.begin(), word.end());
    if (column.key())
      tableLine.push_back(column.name);
  }
  head_.clear();
  tableLine_.clear();
  return appendLine(head_, names, reason) &&
         appendLine(head_, {types.begin(), types.end()}, reason) &&
         appendLine(tableLine_, tableLine, reason);
}

bool IdtWriter::writeRow(const std::vector<std::u16string>& values, std::string& reason) {
  return appendLine(body_, {values.begin(), values.end()}, reason);
}

std::string IdtWriter::finish() const {
  std::string text = head_;
  if (codePage_ != 0 && !(isAscii(head_) && isAscii(tableLine_) && isAscii(body_))) {
    text += std::to_string(codePage_) + '\t';
  }
  return text + tableLine_ + body_;
}

}  // namespace odlex::idt
