#include <android/log.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <map>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <thread>
#include <typeinfo>
#include <utility>
#include <vector>

#include <sensorvela/platform/simulated/log_sink.h>
#include <sensorvela/testkit/atom_catalogue.h>
#include <sensorvela/testkit/atom_text.h>
#include <sensorvela/testkit/stats_service.h>
#include <sensorvela/testkit/value_kinds.h>
#include <sensorvela/testkit/world.h>

#include "atoms/all_records.h"

namespace sensorvela::testkit {
namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

TEST(AtomCatalogueTest, CallsEveryAtomAfterItsRecord) {
  atoms::AllRecords::ForEach([]<typename Record>() {
    const std::string_view type = typeid(Record).name();  // Ends with "18ProxStatusReportedE".
    const VendorAtom atom = createVendorAtom(Record{.reverse_domain_name = "a domain"});
    const AtomInfo* info = FindAtom(atom.atomId);
    ASSERT_NE(info, nullptr) << type;
    EXPECT_TRUE(type.ends_with(std::to_string(info->name.size()) + std::string(info->name) + "E"))
        << type << " is called " << info->name;
    EXPECT_EQ(atom.reverseDomainName, "a domain") << type;
  });
}

TEST(AtomCatalogueTest, IsWhatTheProtocolBufferMessagesSay) {
  const std::map<std::string_view, std::string_view> kFieldTypes = {{"int", "optional int32"},
                                                                    {"long", "optional int64"},
                                                                    {"float", "optional float"},
                                                                    {"bool", "optional bool"},
                                                                    {"ints", "repeated int32"}};
  std::string messages;
  for (const AtomInfo& atom : AtomCatalogue()) {
    messages += "\n// Atom " + std::to_string(atom.id) + ".\nmessage " + std::string(atom.name) +
                " {\n  optional string reverse_domain_name = 1;\n";
    int field = 1;
    for (const auto& [name, kind, meaning] : atom.values) {
      if (!meaning.empty()) messages += "  // " + std::string(meaning) + '\n';
      messages += "  " + std::string(kFieldTypes.at(KindName(kind))) + ' ' + std::string(name) +
                  " = " + std::to_string(++field) + ";\n";
    }
    messages += "}\n";
  }
  std::ifstream file(SENSORVELA_SOURCE_DIR "/docs/atoms.proto");
  std::string text(std::istreambuf_iterator<char>(file), {});
  text.erase(0, text.find("\n// Atom "));
  // What an atom says follows its identifier, up to the message.
  EXPECT_EQ(std::regex_replace(text, std::regex(R"((\n// Atom \d+\.) [^\n]+(\n// [^\n]+)*)"), "$1"),
            messages);
}

VendorAtom Atom(std::int32_t id, std::initializer_list<VendorAtomValue> values) {
  VendorAtom atom;
  atom.atomId = id;
  atom.values = values;
  return atom;
}

TEST(AtomTextTest, TellsApartWhatDiffers) {
  using Value = VendorAtomValue;
  const Value one = Value::make<Value::intValue>(1);
  const Value nan = Value::make<Value::floatValue>(std::bit_cast<float>(0x7fc00001));
  const Value absent = Value::make<Value::repeatedIntValue>(std::nullopt);
  const auto strings = Value::make<Value::repeatedStringValue>(
      std::vector<std::optional<std::string>>{"a \"\n", std::nullopt});
  const auto bools = Value::make<Value::repeatedBoolValue>(std::vector<bool>{true, false});
  VendorAtom annotated = Atom(42, {one});
  annotated.atomAnnotations.emplace();
  const std::pair<VendorAtom, std::string> kCases[] = {
      {Atom(100106, {one}), "HingeAngleStateChanged{value_1=1}"},
      {Atom(100106, {Value::make<Value::longValue>(1), one, one}),
       "HingeAngleStateChanged{value_1=long 1, value_2=1, value_3=int 1}"},
      {Atom(42, {one, nan, absent}),
       "atom 42{value_1=int 1, value_2=float nan(0x7fc00001), value_3=ints absent}"},
      {Atom(42, {strings, bools}),
       R"(atom 42{value_1=strings ["a \x22\x0a", absent], value_2=bools [true, false]})"},
      {annotated, "atom 42{value_1=int 1, annotated}"}};
  for (const auto& [atom, text] : kCases) EXPECT_EQ(::testing::PrintToString(atom), text);
}

TEST(LogTest, CutsALineAsTheDeviceDoes) {
  std::string line;
  const simulated::ScopedLogSink sink([&](auto, auto, std::string_view text) { line = text; });
  __android_log_print(ANDROID_LOG_INFO, "tag", "%s", std::string(1100, 'x').c_str());
  EXPECT_EQ(line, std::string(1023, 'x'));
}

TEST(VirtualTimeDeathTest, AbortsWhenItCannotBegin) {
  using std::chrono::hours;
  const hours century(24 * 365 * 100);
  for (const auto start : {century, -century}) {
    const simulated::VirtualTime time(start);
    EXPECT_DEATH(simulated::VirtualTime(), "there is one already");
    EXPECT_EQ(time.Now(), start);
  }
  for (const auto start : {century + hours(1), -century - hours(1)}) {
    EXPECT_DEATH(simulated::VirtualTime{start}, "start within a century of zero");
  }
}

TEST(VirtualTimeDeathTest, AbortsWhenAnEngineIsThereBeforeOrAfter) {
  simulated::FailServiceManager(kStatsInstance);  // An engine that is not in the way ends at once.
  EXPECT_DEATH(
      {
        const auto engine = MakeEngine(SupplierKind::kNone, nullptr);
        simulated::VirtualTime();
      },
      "construct it before the first engine");
  EXPECT_DEATH(
      {
        std::optional<simulated::VirtualTime> time(std::in_place);
        const auto engine = MakeEngine(SupplierKind::kNone, nullptr);
        time.reset();
      },
      "destroy it after the last engine");
  simulated::ResetServices();
}

TEST(StatsServiceTest, AnswersAsPlannedAndSaysWhenAtomsHaveCome) {
  const auto service = ndk::SharedRefBase::make<StatsService>();
  service->AnswerNext(1, Answer::kOk);
  service->AnswerNext(0, Answer::kError);
  service->AnswerNext(2, Answer::kNoStatus);
  service->AnswerNext(1, Answer::kError);
  std::string answers;
  std::thread reporter([&] {
    for (int i = 0; i < 5; ++i) {
      const auto status = service->reportVendorAtom(Atom(i, {}));
      answers += status.get() == nullptr ? 'n' : status.isOk() ? 'o' : 'e';
    }
  });
  service->WaitForAtoms(5);
  EXPECT_EQ(service->TakeAtoms().size(), 5U);
  reporter.join();
  EXPECT_EQ(answers, "onneo");
  EXPECT_EQ(service->TakeAtoms().size(), 0U);
}

TEST(VirtualTimeTest, NeverGoesBackAndStopsAtTheLatestInstant) {
  using Instant = simulated::VirtualTime::Instant;
  simulated::VirtualTime time(std::chrono::hours(1));
  for (const Instant past : {Instant::min(), Instant::zero()}) {
    time.RunTo(past);
    time.JumpTo(past);
    time.RunFor(past);
    time.Suspend(past);
    EXPECT_EQ(time.Now(), std::chrono::hours(1));
  }
  const auto engine = MakeEngine(SupplierKind::kNone, nullptr);
  simulated::RegisterService(kStatsInstance, ndk::SharedRefBase::make<StatsService>());
  for (int i = 0; i < 2; ++i) {
    time.Suspend(Instant::max());
    time.RunFor(Instant::max());
    EXPECT_EQ(time.Now(), Instant::max());
  }
  simulated::ResetServices();
}

TEST(VirtualTimeTest, ShowsEachNotificationUntilItEnds) {
  int notifications = 0;
  for (const bool is_observed : {true, false}) {
    World world;
    if (is_observed) world.time.ObserveNotifications([&] { ++notifications; });
    world.StartEngine(SupplierKind::kNone).ReportFirmwareState(1, {}, 1);
    EXPECT_EQ(notifications, is_observed ? 1 : 2);  // The destruction is one, too.
  }
  EXPECT_EQ(notifications, 2);
}

TEST(WorldTest, DestroysAnEngineWhoseServiceIsAwayAndStartsAnother) {
  World world;
  world.UnregisterService();
  world.StartEngine();
  world.StartEngine(SupplierKind::kNone);
  world.DestroyEngine();
  world.DestroyEngine();
  EXPECT_FALSE(world.has_engine());
}

}  // namespace
}  // namespace sensorvela::testkit
