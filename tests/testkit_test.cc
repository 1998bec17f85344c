#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <string>
#include <string_view>
#include <typeinfo>

#include <sensorvela/testkit/atom_catalogue.h>
#include <sensorvela/testkit/value_kinds.h>
#include "atoms/all_records.h"

namespace sensorvela::testkit {
namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

TEST(AtomCatalogueTest, AgreesWithEveryBuilder) {
  atoms::AllRecords::ForEach([]<typename Record>() {
    const std::string_view type = typeid(Record).name();  // Ends with "18ProxStatusReportedE".
    const VendorAtom atom = createVendorAtom(Record{.reverse_domain_name = "a domain"});
    const AtomInfo* info = FindAtom(atom.atomId);
    ASSERT_NE(info, nullptr) << type;
    EXPECT_TRUE(type.ends_with(std::to_string(info->name.size()) + std::string(info->name) + "E"))
        << type << " is called " << info->name;
    EXPECT_EQ(atom.reverseDomainName, "a domain") << type;
    EXPECT_TRUE(std::ranges::equal(atom.values, info->values, {}, &VendorAtomValue::getTag,
                                   &ValueInfo::kind))
        << type;
  });
}

TEST(AtomCatalogueTest, IsWhatTheDocumentSays) {
  std::string tables;
  for (const AtomInfo& atom : AtomCatalogue()) {
    tables += "## " + std::string(atom.name) + " (" + std::to_string(atom.id) + ")\n" +
              "| # | value | kind | meaning |\n|---|---|---|---|\n";
    for (std::size_t i = 0; i < atom.values.size(); ++i) {
      const auto& [name, kind, meaning] = atom.values[i];
      tables += "| " + std::to_string(i + 1) + " | `" + std::string(name) + "` | " +
                std::string(KindName(kind)) + " | " + std::string(meaning) + " |\n";
    }
  }
  std::ifstream document(SENSORVELA_SOURCE_DIR "/docs/atoms.md");
  std::string documented;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with("## ") || line.starts_with("|")) documented += line + '\n';
  }
  EXPECT_EQ(documented, tables);
}

}  // namespace
}  // namespace sensorvela::testkit
