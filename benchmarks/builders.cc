// Each builder, beside a vector filled in place.
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <sensorvela/testkit/atom_catalogue.h>

#include "atoms/all_records.h"
#include "benchmarks/comparison.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

/// Becomes a record's member of exactly that type; an enumeration is an int.
template <typename Member>
struct As {
  Member member{};

  template <typename Type>
    requires std::is_same_v<Type, Member> ||
             (std::is_enum_v<Type> && std::is_same_v<Member, std::int32_t>)
  operator Type() const {  // NOLINT(google-explicit-constructor): so that it initializes a member.
    return static_cast<Type>(member);
  }
};

using List = std::vector<std::int32_t>;

/// The record's members after its domain name begin with these types.
template <typename Record, typename... Members>
concept BeginsWith = requires { Record{std::string(), As<Members>()...}; };

/// One of each of the record's values, in their order.
template <typename Record, typename... Found>
auto MembersOf() {
  if constexpr (BeginsWith<Record, Found..., std::int32_t>) {
    return MembersOf<Record, Found..., std::int32_t>();
  } else if constexpr (BeginsWith<Record, Found..., std::int64_t>) {
    return MembersOf<Record, Found..., std::int64_t>();
  } else if constexpr (BeginsWith<Record, Found..., float>) {
    return MembersOf<Record, Found..., float>();
  } else if constexpr (BeginsWith<Record, Found..., bool>) {
    return MembersOf<Record, Found..., bool>();
  } else if constexpr (BeginsWith<Record, Found..., List>) {
    return MembersOf<Record, Found..., List>();
  } else {
    return std::tuple<Found...>();
  }
}

template <typename Member>
constexpr std::size_t kAlternative = std::is_same_v<Member, std::int32_t>   ? 0
                                     : std::is_same_v<Member, std::int64_t> ? 1
                                     : std::is_same_v<Member, float>        ? 2
                                     : std::is_same_v<Member, bool>         ? 4
                                                                            : 5;

constexpr int kCalls = 1000;

template <typename Record>
MakeSlice Builds(const Record& record) {
  return [record]() -> Slice {
    return [record] {
      return MeanNs(kCalls, [&] {
        VendorAtom atom = createVendorAtom(record);
        benchmark::DoNotOptimize(atom);
      });
    };
  };
}

/// Fills an atom's vector, which begins with ints of 0. A builder is a function of another library,
/// so this is at least a function.
template <typename... Members>
MakeSlice FillsAVector(const std::tuple<Members...>& all) {
  return [all]() -> Slice {
    return [members = all]() mutable {
      return MeanNs(kCalls, [&]() __attribute__((noinline)) {
        benchmark::DoNotOptimize(members);
        VendorAtom atom;
        atom.atomId = 1;
        atom.values = std::vector<VendorAtomValue>(sizeof...(Members));
        VendorAtomValue* value = atom.values.data();
        std::apply(
            [&](const Members&... each) {
              (std::construct_at(value++, std::in_place_index<kAlternative<Members>>, each), ...);
            },
            members);
        benchmark::DoNotOptimize(atom);
      });
    };
  };
}

/// A list is as long as the upload's.
void Fill(List& list) { list.resize(20); }
void Fill(const auto&) {}

}  // namespace

void AddBuilders() {
  atoms::AllRecords::ForEach([]<typename Record>() {
    auto members = MembersOf<Record>();
    std::apply([](auto&... each) { (Fill(each), ...); }, members);
    const auto record = std::apply(
        []<typename... Members>(const Members&... each) {
          return Record{std::string(), As<Members>{each}...};
        },
        members);
    Add({.table = "createVendorAtom beside a vector filled in place",
         .name = std::string(testkit::FindAtom(Record::kAtomId)->name),
         .operation = Builds(record),
         .baseline = FillsAVector(members)});
  });
}

}  // namespace sensorvela::benchmarks
