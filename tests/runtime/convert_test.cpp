#include "runtime/convert.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "runtime/dates.hpp"
#include "runtime/golden_cases.hpp"
#include "support/test_support.hpp"

namespace orvo::test {
namespace {

using namespace runtime_golden;
namespace rt = orvo::runtime;

using platform::RegionalSettings;

const RegionalSettings& en() { return settingsFor("1033"); }

class Thing : public Object {
 public:
  [[nodiscard]] std::string_view className() const noexcept override { return "Thing"; }
};

// Every coercion refuses Null with 94 and objects, arrays, error values and Missing with Type
// mismatch (13) rather than crash on them.
TEST(ConvertRefusals, NonValuesRaiseNumberedErrors) {
  const std::pair<Variant, int> refused[] = {
      {Variant(Null{}), 94},
      {Variant(std::shared_ptr<Object>(std::make_shared<Thing>())), 13},
      {Variant::array({Variant(1.0)}), 13},
      {Variant(ErrorCode{5}), 13},
      {Variant::missing(), 13}};
  for (const auto& [value, error] : refused) {
    const std::string what(typeName(value.type()));
    EXPECT_EQ(errorNumber([&] { (void)rt::CStr(value, en()); }), error) << what;
    EXPECT_EQ(errorNumber([&] { (void)rt::CDbl(value, en()); }), error) << what;
    EXPECT_EQ(errorNumber([&] { (void)rt::CIntV(value, en()); }), error) << what;
    EXPECT_EQ(errorNumber([&] { (void)rt::CCur(value, en()); }), error) << what;
    EXPECT_EQ(errorNumber([&] { (void)rt::CDate(value, en()); }), error) << what;
    EXPECT_EQ(errorNumber([&] { (void)rt::CBool(value, en()); }), error) << what;
    EXPECT_EQ(errorNumber([&] { (void)rt::compareVariants(Variant(1.0), value, en()); }), error)
        << what;
    EXPECT_FALSE(rt::IsNumeric(value, en())) << what;
  }
}

TEST(ConvertTable, EachConversionOfEachType) {
  // Each call takes the value, the second value (compare only) and the regional settings.
  using Call = std::function<Variant(const Variant&, const Variant&, const RegionalSettings&)>;
  const std::map<String, Call> calls = {
      {u"CStr", [](auto& v, auto&, auto& rs) { return Variant(rt::CStr(v, rs)); }},
      {u"CDbl", [](auto& v, auto&, auto& rs) { return Variant(rt::CDbl(v, rs)); }},
      {u"CIntV", [](auto& v, auto&, auto& rs) { return Variant(rt::CIntV(v, rs)); }},
      {u"CLngV", [](auto& v, auto&, auto& rs) { return Variant(rt::CLngV(v, rs)); }},
      {u"CByteV", [](auto& v, auto&, auto& rs) { return Variant(rt::CByteV(v, rs)); }},
      {u"CSngV", [](auto& v, auto&, auto& rs) { return Variant(rt::CSngV(v, rs)); }},
      {u"CCur", [](auto& v, auto&, auto& rs) { return Variant(rt::CCur(v, rs)); }},
      {u"CBool", [](auto& v, auto&, auto& rs) { return Variant(rt::CBool(v, rs)); }},
      {u"CDate", [](auto& v, auto&, auto& rs) { return Variant(datePartsOf(rt::CDate(v, rs))); }},
      {u"CDate serial", [](auto& v, auto&, auto& rs) { return Variant(rt::CDate(v, rs)); }},
      {u"IsNumeric",
       [](auto& v, auto&, auto& rs) { return Variant(toVBool(rt::IsNumeric(v, rs))); }},
      {u"compare",
       [](auto& a, auto& b, auto& rs) {
         return Variant(static_cast<std::int32_t>(rt::compareVariants(a, b, rs)));
       }},
  };
  for (const auto& row : readTestData("runtime/convert.tsv", 5)) {
    SCOPED_TRACE("data line " + std::to_string(row.line));
    const auto& f = row.fields;
    const RegionalSettings& rs = settingsFor(toUtf8(f[1]));
    const Variant value = typedValue(f[2]);
    const Variant other = f[3].empty() ? Variant() : typedValue(f[3]);
    expectCall(row, f[4], [&] { return calls.at(f[0])(value, other, rs); });
    if (f[0] == u"CDbl" && value.type() == VarType::String && f[4] != u"#6") {
      EXPECT_EQ(rt::IsNumeric(value, rs), f[4] != u"#13");
    }
  }
}

}  // namespace
}  // namespace orvo::test
