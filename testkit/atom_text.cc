#include "testkit/atom_text.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "testkit/atom_catalogue.h"
#include "trace_format/atom_value.h"

namespace sensorvela::testkit {
namespace {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

template <typename Int>
std::string Text(Int value) {
  return std::to_string(value);
}

std::string Text(bool value) { return value ? "true" : "false"; }

/// The fewest digits that read back as the same float: nine are enough for every float.
std::string Text(float value) {
  std::array<char, 32> text = {};
  if (std::isnan(value)) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    std::snprintf(text.data(), text.size(), "nan(0x%08x)", static_cast<unsigned>(bits));
    return text.data();
  }
  for (int digits = 1; digits <= 9; ++digits) {
    std::snprintf(text.data(), text.size(), "%.*g", digits, static_cast<double>(value));
    if (std::strtof(text.data(), nullptr) == value) break;
  }
  return text.data();
}

/// In quotes, with what would end the line or the text as `\x0a`.
std::string Text(const std::string& value) {
  std::string text = "\"";
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < ' ' || byte == 0x7f || c == '"' || c == '\\') {
      std::array<char, 8> escaped = {};
      std::snprintf(escaped.data(), escaped.size(), "\\x%02x", static_cast<unsigned>(byte));
      text += escaped.data();
    } else {
      text += c;
    }
  }
  return text + '"';
}

template <typename T>
std::string Text(const std::vector<T>& list);

template <typename T>
std::string Text(const std::optional<T>& value) {
  return value ? Text(*value) : "absent";
}

template <typename T>
std::string Text(const std::vector<T>& list) {
  std::string text;
  // The elements of a `std::vector<bool>` are no bools: the cast converts them.
  for (const auto& element : list) {
    text += (text.empty() ? "" : ", ") + Text(static_cast<const T&>(element));
  }
  return '[' + text + ']';
}

std::string ValueText(const VendorAtom& atom, std::size_t index) {
  const VendorAtomValue& value = atom.values[index];
  const AtomInfo* info = FindAtom(atom.atomId);
  const bool is_known =
      info != nullptr && index < info->values.size() && info->values[index].kind == value.getTag();
  std::string text = "?";
  trace_format::VisitValue(value, [&](const auto& content, std::string_view kind) {
    text = (is_known ? "" : std::string(kind) + ' ') + Text(content);
  });
  return ValueName(atom, index) + '=' + text;
}

}  // namespace

std::string AtomText(const VendorAtom& atom) {
  std::string text;
  const auto add = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  if (!atom.reverseDomainName.empty()) add("domain=" + Text(atom.reverseDomainName));
  for (std::size_t i = 0; i < atom.values.size(); ++i) add(ValueText(atom, i));
  if (atom.valuesAnnotations || atom.atomAnnotations) add("annotated");
  return AtomName(atom) + '{' + text + '}';
}

}  // namespace sensorvela::testkit

void aidl::android::frameworks::stats::PrintTo(const VendorAtom& atom, std::ostream* out) {
  *out << sensorvela::testkit::AtomText(atom);
}
