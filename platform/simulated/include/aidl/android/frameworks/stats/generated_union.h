// What the platform's interface compiler gives every union. Internal to the stand-ins.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <initializer_list>
#include <type_traits>
#include <utility>
#include <variant>

namespace sensorvela::simulated {

/// `Union` derives from it, declares its tags in the order of the alternatives, and inherits the
/// constructors. It is made implicitly from anything of which one alternative can be made.
template <typename Union, typename TagType, typename... Alternatives>
class GeneratedUnion {
 public:
  using Tag = TagType;

  /// The first alternative, zeroed.
  GeneratedUnion() : value_(std::in_place_index<0>) {}  // NOLINT(modernize-use-equals-default)

  template <typename T,
            typename = std::enable_if_t<!std::is_base_of_v<GeneratedUnion, std::decay_t<T>>>>
  constexpr GeneratedUnion(T&& content)  // NOLINT(bugprone-forwarding-reference-overload)
      : value_(std::forward<T>(content)) {}

  template <std::size_t index, typename... Args>
  constexpr explicit GeneratedUnion(std::in_place_index_t<index> at, Args&&... args)
      : value_(at, std::forward<Args>(args)...) {}

  template <Tag tag, typename... Args>
  static Union make(Args&&... args) {
    return Union(std::in_place_index<static_cast<std::size_t>(tag)>, std::forward<Args>(args)...);
  }

  template <Tag tag, typename T, typename... Args>
  static Union make(std::initializer_list<T> list, Args&&... args) {
    return Union(std::in_place_index<static_cast<std::size_t>(tag)>, std::move(list),
                 std::forward<Args>(args)...);
  }

  Tag getTag() const { return static_cast<Tag>(value_.index()); }

  /// Aborts when the value holds another alternative.
  template <Tag tag>
  const auto& get() const {
    if (getTag() != tag) std::abort();
    return *std::get_if<static_cast<std::size_t>(tag)>(&value_);
  }
  template <Tag tag>
  auto& get() {
    if (getTag() != tag) std::abort();
    return *std::get_if<static_cast<std::size_t>(tag)>(&value_);
  }

  template <Tag tag, typename... Args>
  void set(Args&&... args) {
    value_.template emplace<static_cast<std::size_t>(tag)>(std::forward<Args>(args)...);
  }

 protected:
  std::variant<Alternatives...> value_;
};

}  // namespace sensorvela::simulated
