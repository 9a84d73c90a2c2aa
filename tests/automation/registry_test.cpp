#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "automation/coerce.hpp"
#include "files/files_fixture.hpp"
#include "frame/state.hpp"
#include "orvogeneric/automation.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/error.hpp"
#include "support/test_support.hpp"

namespace orvo::automation {
namespace {

using test::errorNumber;

// A plausible value of each declared type, so that every member can be called.
Variant sample(std::string_view type) {
  if (type.ends_with("[]")) return Variant::array({Variant(std::int32_t{1}), Variant(u"b")});
  if (type == "String") return Variant(u"a");
  if (type == "Boolean") return Variant(VBool::False);
  if (type == "Integer" || type == "Long" || type == "Byte") return Variant(std::int32_t{2});
  if (type == "Single" || type == "Double" || type == "Currency") return Variant(2.5);
  if (type == "Date") return Variant(Date{46000});
  if (type == "Collection") return Variant(std::shared_ptr<Object>(std::make_shared<Collection>()));
  if (type == "Variant") return Variant::array({Variant(std::int32_t{1})});
  return Variant(std::int32_t{1});  // enumerations
}

// Members that touch files get the sample text as a path: they run in a scratch directory, with
// no programs to start, and the process-wide settings they change are put back afterwards.
class RegisteredMembers : public test::FilesTest {
 protected:
  void SetUp() override {
    FilesTest::SetUp();
    std::filesystem::current_path(dir_);
  }
  void TearDown() override {
    std::filesystem::current_path(previous_);
    frame::StaticGlobals::instance().resetForTesting();
    FilesTest::TearDown();
  }
  const std::filesystem::path previous_ = std::filesystem::current_path();
};

TEST_F(RegisteredMembers, EveryOneInvokes) {
  const test::ScopedEnvironment noPrograms("PATH", "");
  int invoked = 0;
  int succeeded = 0;
  for (const auto& cls : classes()) {
    ASSERT_NE(cls.create, nullptr) << cls.name;
    const auto object = cls.create();
    EXPECT_EQ(object->className(), cls.name);
    std::set<std::pair<std::string_view, MemberKind>> seen;
    int slot = 0;
    for (const auto& m : cls.members) {
      EXPECT_EQ(m.slot, ++slot) << cls.name << "." << m.name << ": slots follow the declaration";
      EXPECT_TRUE(seen.emplace(m.name, m.kind).second) << cls.name << "." << m.name << " twice";
      std::vector<Variant> args;
      for (const auto& p : m.params) {
        args.push_back(sample(p.type));
        EXPECT_EQ(p.hasDefault, p.defaultValue != nullptr) << cls.name << "." << m.name;
      }
      const std::int32_t number =
          errorNumber([&] { (void)invoke(*object, m.name, args, {}, m.kind); });
      succeeded += number == 0 ? 1 : 0;
      // A member may refuse a sample (a text where a number is wanted); binding errors would
      // mean the registry and the class disagree.
      for (const int binding : {438, 448, 449, 450}) {
        EXPECT_NE(number, binding) << cls.name << "." << m.name;
      }
      ++invoked;
    }
  }
  EXPECT_GE(invoked, 45);
  // Most members accept the plain samples; a registry whose invokers all failed would not.
  EXPECT_GE(succeeded * 4, invoked * 3) << succeeded << " of " << invoked;
}

TEST(RegistryTest, LookupIsCaseInsensitive) {
  const auto* cls = findClass("stringutilities");
  ASSERT_NE(cls, nullptr);
  EXPECT_EQ(cls->name, "StringUtilities");
  EXPECT_NE(findMember(*cls, "expandstring", MemberKind::Method), nullptr);
  EXPECT_EQ(findMember(*cls, "BannedCharExtender_Allowed", MemberKind::Method), nullptr);
  EXPECT_NE(findMember(*cls, "BannedCharExtender_Allowed", MemberKind::PropertyGet), nullptr);
  EXPECT_EQ(findClass("NoSuchClass"), nullptr);
}

// The check a tool makes to name a refused argument gives the verdict the call's coercion gives:
// per declared type, values taken, refused (13) and out of range (6); and, for one member,
// against the call itself.
TEST(InvokeTest, CheckedArgumentsAreRefusedAsTheCallRefusesThem) {
  const auto verdict = [](const ParamInfo& p, const Variant& v) {
    try {
      checkArgument(p, v);
      return 0;
    } catch (const Error& e) {
      return e.number();
    }
  };
  struct Case {
    const char* type;
    Variant value;
    std::int32_t error;
  };
  const std::vector<Case> cases = {
      {"String", Variant(2.5), 0},
      {"String", Variant::array({}), 13},
      {"Double", Variant(u"abc"), 13},
      {"Double", Variant(u"2.5"), 0},
      {"Long", Variant(1e12), 6},
      {"Long", Variant(u"12"), 0},
      {"Integer", Variant(70000.0), 6},
      {"Byte", Variant(std::int32_t{-1}), 6},
      {"Boolean", Variant(u"maybe"), 13},
      {"Boolean", Variant(u"true"), 0},
      {"Date", Variant(u"not a date"), 13},
      {"Currency", Variant(u"1.25"), 0},
      {"enumFileEncoding", Variant(u"x"), 13},
      {"CreateMutexEnum", Variant(std::int32_t{1}), 0},
      {"Variant[]", Variant(1.0), 13},
      {"Variant[]", Variant::array({Variant(1.0)}), 0},
      {"Variant", Variant(u"anything"), 0},
      {"Object", Variant(u"text"), 0},  // left to the call, which knows the class
  };
  test::ScopedLocale locale("en_US.UTF-8");
  for (const Case& c : cases) {
    const ParamInfo p{"p", c.type, Direction::In, false, false, nullptr, ""};
    EXPECT_EQ(verdict(p, c.value), c.error) << c.type;
  }
  const ParamInfo optional{"p", "Double", Direction::In, true, false, nullptr, ""};
  EXPECT_EQ(verdict(optional, Variant::missing()), 0) << "an omitted optional takes its default";
  // Against the call itself: RoundUp's value is a Double.
  MathsUtilities maths;
  const auto* m = findMember(*findClass("MathsUtilities"), "RoundUp", MemberKind::Method);
  ASSERT_NE(m, nullptr);
  for (const Variant& v : {Variant(u"abc"), Variant(u"2.5"), Variant::array({})}) {
    std::int32_t called = 0;
    try {
      (void)invoke(maths, "RoundUp", {v});
    } catch (const Error& e) {
      called = e.number();
    }
    EXPECT_EQ(verdict(m->params[0], v), called);
  }
}

TEST(InvokeTest, ArgumentsBindLikeAnAutomationHost) {
  StringUtilities strings;
  MathsUtilities maths;
  const Variant object(std::shared_ptr<Object>(std::make_shared<Collection>()));
  struct Case {
    const char* name;
    Object& object;
    std::string member;
    std::vector<Variant> args;
    std::vector<NamedArgument> named;
    std::int32_t error;
  };
  const Case cases[] = {
      {"text where a number is wanted", maths, "RoundUp", {Variant(u"abc")}, {}, 13},
      {"numeric text is a number", maths, "RoundUp", {Variant(u"1.5")}, {}, 0},
      {"missing required", maths, "RoundUp", {}, {}, 449},
      {"too many", maths, "RoundUp", {Variant(1.0), Variant(2.0)}, {}, 450},
      {"unknown named", maths, "RoundUp", {}, {{"Bogus", Variant(1.0)}}, 448},
      {"named twice", maths, "RoundUp", {Variant(1.0)}, {{"value", Variant(1.0)}}, 450},
      {"unknown member", maths, "Nope", {}, {}, 438},
      {"not an array", strings, "Maximum", {Variant(1.0)}, {}, 13},
      {"overflowing Integer", strings, "LongDirFix", {Variant(u"a"), Variant(40000.0)}, {}, 6},
      {"object where text is wanted", strings, "EncodeQuotes", {object}, {}, 13},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(errorNumber([&] { invoke(c.object, c.member, c.args, c.named); }), c.error) << c.name;
  }
}

TEST(InvokeTest, DefaultsNamedArgumentsAndByReferenceResults) {
  StringUtilities strings;
  // TrimInsideQuotes defaults to true, AddSingleQuotes named.
  auto r = invoke(strings, "AddQuotesToString", {Variant(u"\" x \"")},
                  {{"addsinglequotes", Variant(VBool::True)}});
  EXPECT_EQ(*r.result.get<String>(), u"'x'");
  EXPECT_TRUE(r.byref.empty());

  r = invoke(strings, "SplitOnSpaces", {Variant(u" a b ")}, {{"TrimFirst", Variant(VBool::False)}});
  EXPECT_EQ(r.byref.at(0).first, "NumWords");
  EXPECT_EQ(*r.byref.at(0).second.get<std::int32_t>(), 4);

  r = invoke(strings, "BannedCharExtender_Equals", {}, {}, MemberKind::PropertyGet);
  EXPECT_EQ(*r.result.get<String>(), u"equals:");

  MathsUtilities maths;
  r = invoke(maths, "IsLongInArray",
             {Variant(5.0), Variant::array({Variant(1.0), Variant(5.0), Variant(5.0)})},
             {{"Index", Variant(0)}});
  EXPECT_EQ(*r.result.get<VBool>(), VBool::True);
  EXPECT_EQ(r.byref.at(1).first, "Index");
  EXPECT_EQ(*r.byref.at(1).second.get<std::int32_t>(), 1);
}

TEST(InvokeTest, GlobalInstancesAreSharedAndOnlyForGlobalClasses) {
  EXPECT_EQ(globalInstance("MathsUtilities"), globalInstance("mathsutilities"));
  EXPECT_EQ(errorNumber([] { (void)globalInstance("Collection"); }), 429);
}

}  // namespace
}  // namespace orvo::automation
