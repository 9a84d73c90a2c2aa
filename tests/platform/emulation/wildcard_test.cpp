#include <gtest/gtest.h>

#include "platform/file.hpp"
#include "support/test_support.hpp"

namespace orvo::platform {
namespace {

using test::show;

TEST(Wildcard, MatchesAsTheDirectorySearchDoes) {
  struct Case {
    String pattern;
    String name;
    bool match;
  };
  const Case cases[] = {
      {u"*.*", u"noextension", true},  // "*.*" is everything, dot or not
      {u"*.*", u"a.b.c", true},
      {u"*", u".hidden", true},
      {u"*.txt", u"a.txt", true},
      {u"*.txt", u"A.TXT", true},  // names compare without case
      {u"*.txt", u"a.b.txt", true},
      {u"*.txt", u"a.txt.bak", false},
      {u"*.txt", u"atxt", false},
      {u"*.", u"noextension", true},  // a final dot matches the end of a name without one
      {u"*.", u"a.b", false},
      {u"a.*", u"a", true},
      {u"a.*", u"a.b", true},
      {u"a.*", u"ab", false},
      {u"a?c", u"abc", true},
      {u"a?c", u"ac", false},
      {u"a??", u"a", true},           // "?" at the end of a name matches nothing
      {u"a??.txt", u"ab.txt", true},  // ... and before its dot
      {u"a??.txt", u"abcd.txt", false},
      {u"?", u"ab", false},
      {u"data", u"DATA", true},
      {u"\u00e9*", u"\u00c9t\u00e9", true},
      {u"*a*a*a*a*a*a*a*a*b", String(200, u'a'), false},  // stays quick
  };
  for (const auto& c : cases) {
    EXPECT_EQ(matchesWildcard(c.name, c.pattern), c.match)
        << show(c.pattern) << " on " << show(c.name);
  }
}

}  // namespace
}  // namespace orvo::platform
