#include "msi/query/Predicate.h"

#include <algorithm>

#include "msi/engine/Table.h"

namespace odlex::query {
namespace {

std::uint32_t nullCell(ValueKind kind) {
  return kind == ValueKind::kInteger ? static_cast<std::uint32_t>(engine::kNullInteger) : 0;
}

bool bindParameter(Predicate& predicate, const Field& field, engine::Error& error) {
  bool fits = field.isNull() ||
              (predicate.valueKind == ValueKind::kInteger && field.kind == Field::Kind::kInteger) ||
              (predicate.valueKind == ValueKind::kString && field.kind == Field::Kind::kString);
  if (!fits) {
    const char* expected = predicate.valueKind == ValueKind::kInteger ? "an integer" : "a string";
    return fail(error, engine::kDatatypeMismatch, predicate.position,
                "parameter " + std::to_string(*predicate.parameter + 1) + " must be " + expected +
                    " or null for this comparison");
  }
  predicate.text = field.kind == Field::Kind::kString ? field.text : std::u16string();
  predicate.integer = field.kind == Field::Kind::kInteger ? field.integer : engine::kNullInteger;
  return true;
}

std::uint32_t constantCell(const Predicate& predicate, const engine::StringPool& strings) {
  if (predicate.valueKind == ValueKind::kInteger) {
    return static_cast<std::uint32_t>(predicate.integer);
  }
  if (predicate.text.empty())
    return 0;
  std::uint32_t id = strings.find(predicate.text);
  return id == 0 ? kAbsentString : id;
}

template <typename T>
bool ordered(Comparison comparison, const T& a, const T& b) {
  switch (comparison) {
    case Comparison::kLess:
      return a < b;
    case Comparison::kGreater:
      return a > b;
    case Comparison::kLessEqual:
      return a <= b;
    case Comparison::kGreaterEqual:
      return a >= b;
    case Comparison::kEqual:
      return a == b;
    case Comparison::kNotEqual:
      return a != b;
  }
  return false;
}

bool compare(const Predicate& predicate, std::span<const std::uint32_t* const> rows,
             const engine::StringPool& strings) {
  std::uint32_t a = rows[predicate.left.source][predicate.left.column];
  std::uint32_t b = predicate.rightColumn
                        ? rows[predicate.rightColumn->source][predicate.rightColumn->column]
                        : predicate.cell;
  if (predicate.comparison == Comparison::kEqual)
    return a == b;
  if (predicate.comparison == Comparison::kNotEqual)
    return a != b;
  std::uint32_t null = nullCell(predicate.valueKind);
  if (a == null || b == null)
    return false;
  if (predicate.valueKind == ValueKind::kInteger) {
    return ordered(predicate.comparison, static_cast<std::int32_t>(a),
                   static_cast<std::int32_t>(b));
  }
  std::u16string_view right =
      predicate.rightColumn ? strings.get(b) : std::u16string_view(predicate.text);
  return ordered(predicate.comparison, strings.get(a), right);
}

}  // namespace

ValueKind valueKindOf(const engine::Column& column) {
  if (column.isBinary())
    return ValueKind::kBinary;
  return column.isInteger() ? ValueKind::kInteger : ValueKind::kString;
}

bool bindValues(Predicate& predicate, std::span<const Field> parameters,
                const engine::StringPool& strings, engine::Error& error) {
  for (Predicate& child : predicate.children) {
    if (!bindValues(child, parameters, strings, error))
      return false;
  }
  if (predicate.kind != Predicate::Kind::kCompare || predicate.rightColumn)
    return true;
  if (predicate.parameter && !bindParameter(predicate, parameters[*predicate.parameter], error)) {
    return false;
  }
  predicate.cell = constantCell(predicate, strings);
  return true;
}

bool matches(const Predicate& predicate, std::span<const std::uint32_t* const> rows,
             const engine::StringPool& strings) {
  switch (predicate.kind) {
    case Predicate::Kind::kAnd:
      return std::all_of(predicate.children.begin(), predicate.children.end(),
                         [&](const Predicate& child) { return matches(child, rows, strings); });
    case Predicate::Kind::kOr:
      return std::any_of(predicate.children.begin(), predicate.children.end(),
                         [&](const Predicate& child) { return matches(child, rows, strings); });
    case Predicate::Kind::kIsNull:
      return rows[predicate.left.source][predicate.left.column] == nullCell(predicate.valueKind);
    case Predicate::Kind::kIsNotNull:
      return rows[predicate.left.source][predicate.left.column] != nullCell(predicate.valueKind);
    case Predicate::Kind::kCompare:
      return compare(predicate, rows, strings);
  }
  return false;
}

std::uint32_t highestSource(const Predicate& predicate) {
  std::uint32_t highest = predicate.left.source;
  if (predicate.rightColumn)
    highest = std::max(highest, predicate.rightColumn->source);
  for (const Predicate& child : predicate.children) {
    highest = std::max(highest, highestSource(child));
  }
  return highest;
}

}  // namespace odlex::query
