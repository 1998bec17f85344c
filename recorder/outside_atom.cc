#include "recorder/outside_atom.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "trace_format/atom_value.h"
#include "trace_format/words.h"

namespace sensorvela::recorder {

namespace field = trace_format::field;

namespace {

template <typename Content>
void Write(EventLine& line, const Content& content) {
  line.Value(content);
}

void Write(EventLine& line, const std::optional<std::string>& text) {
  line.Value(text.value_or(""));
}

template <typename Element>
void Write(EventLine& line, const std::optional<std::vector<Element>>& list) {
  line.Open('[');
  // The elements of a `std::vector<bool>` are no bools: the cast converts them.
  if (list) {
    for (const auto& element : *list) Write(line, static_cast<const Element&>(element));
  }
  line.Close(']');
}

}  // namespace

void WriteOutsideAtom(EventLine& line, const SensorVela::VendorAtom& atom) {
  line.Integer(field::kId, atom.atomId).Text(field::kDomain, atom.reverseDomainName);
  line.Name(field::kValues).Open('[');
  for (const auto& value : atom.values) {
    line.Open('{');
    trace_format::VisitValue(value, [&](const auto& content, std::string_view kind) {
      Write(line.Name(kind), content);
    });
    line.Close('}');
  }
  line.Close(']');
}

}  // namespace sensorvela::recorder
