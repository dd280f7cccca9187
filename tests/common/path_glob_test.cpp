#include "client/src/common/path_glob.h"

#include <glob.h>

#include <deque>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

using GlobErrorHandler = int (*)(const char*, int);

/// The library's `glob` goes through here, so that a test can let it run out of memory.
namespace wrapped {
bool g_memorySuffices = true;

int realGlob(const char* pattern, int flags, GlobErrorHandler handler,
             glob_t* found) asm("__real_glob");
int globOrFail(const char* pattern, int flags, GlobErrorHandler handler,
               glob_t* found) asm("__wrap_glob");
int globOrFail(const char* pattern, int flags, GlobErrorHandler handler, glob_t* found) {
  return g_memorySuffices ? realGlob(pattern, flags, handler, found) : GLOB_NOSPACE;
}
}  // namespace wrapped

namespace pwr {
namespace {

namespace fs = std::filesystem;
using qumetra::test::TempDir;
using qumetra::test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;

/// Patterns are tried in a fresh directory, which is the current one.
class DoGlob : public testing::Test {
 protected:
  DoGlob() { fs::current_path(m_dir.path()); }
  ~DoGlob() override { fs::current_path(m_former); }

  void make(const std::string& name) { writeFile(m_dir.path() / name, ""); }
  std::deque<std::string> glob(const std::string& pattern) {
    std::deque<std::string> results;
    EXPECT_TRUE(doGlob(pattern, results));
    return results;
  }

  fs::path m_former = fs::current_path();
  TempDir m_dir;
};

TEST_F(DoGlob, APatternWithoutWildcardsIsItsOwnResultWithoutDoubleQuotes) {
  EXPECT_THAT(glob("\"/no such dir/\"x?; $(y)"), ElementsAre("/no such dir/x?; $(y)"));
}

TEST_F(DoGlob, AStarMatchesInByteOrder) {
  for (const char* name : {"b.csv", "a.csv", "C.csv", "a.txt"}) {
    make(name);
  }
  EXPECT_THAT(glob("*.csv"), ElementsAre("C.csv", "a.csv", "b.csv"));
}

TEST_F(DoGlob, HiddenFilesDoNotMatchAStar) {
  make(".hidden");
  make("seen");
  EXPECT_THAT(glob("*"), ElementsAre("seen"));
}

TEST_F(DoGlob, ResultsKeepTheDirectoryOfThePattern) {
  make("d/a1");
  make("d/a2");
  const std::string dir = m_dir.path().string();
  EXPECT_THAT(glob(dir + "/d/a*"), ElementsAre(dir + "/d/a1", dir + "/d/a2"));
}

TEST_F(DoGlob, BracketsMatchOneOfTheirCharacters) {
  for (const char* name : {"a1", "a2", "a3"}) {
    make(name);
  }
  EXPECT_THAT(glob("a[12]"), ElementsAre("a1", "a2"));
  EXPECT_THAT(glob("a[2-9]"), ElementsAre("a2", "a3"));
}

TEST_F(DoGlob, ACaretInBracketsMatchesAllOtherCharacters) {
  for (const char* name : {"a1", "a2", "a3"}) {
    make(name);
  }
  EXPECT_THAT(glob("a[^2]"), ElementsAre("a1", "a3"));
}

TEST_F(DoGlob, ACaretElsewhereIsACharacter) {
  make("a^b");
  EXPECT_THAT(glob("a^b"), ElementsAre("a^b"));
  EXPECT_THAT(glob("a^c"), IsEmpty());
}

TEST_F(DoGlob, WhatMatchesNothingGivesNothing) { EXPECT_THAT(glob("*.csv"), IsEmpty()); }

TEST_F(DoGlob, BlanksSeparateWordsAndAllTheirFilesAreSortedTogether) {
  make("b1");
  make("a1");
  make("c");
  EXPECT_THAT(glob("b* a* c missing"), ElementsAre("a1", "b1", "c"));
}

TEST_F(DoGlob, WhatDoubleQuotesEncloseIsLiteral) {
  make("my dir/a1");
  make("my dir/*x");
  EXPECT_THAT(glob("\"my dir\"/a*"), ElementsAre("my dir/a1"));
  EXPECT_THAT(glob("\"my dir/*x\""), ElementsAre("my dir/*x"));
  EXPECT_THAT(glob("\"my dir/*\""), IsEmpty());
}

TEST_F(DoGlob, ABackslashMakesTheNextCharacterLiteral) {
  make("a*");
  make("ab");
  make("c d");
  EXPECT_THAT(glob("a\\*"), ElementsAre("a*"));
  EXPECT_THAT(glob("c\\ d*"), ElementsAre("c d"));
}

TEST_F(DoGlob, ABackslashBetweenQuotesIsItselfUnlessItHidesAQuote) {
  make("a\\b1");
  make("a\"b1");
  EXPECT_THAT(glob("\"a\\b\"*"), ElementsAre("a\\b1"));
  EXPECT_THAT(glob("\"a\\\"b\"*"), ElementsAre("a\"b1"));
}

TEST_F(DoGlob, ABackslashAtTheEndIsACharacter) {
  make("a\\");
  make("b");
  EXPECT_THAT(glob("*\\"), ElementsAre("a\\"));
}

TEST_F(DoGlob, NothingInAPatternIsRun) {
  make("a");
  for (const char* pattern : {"*;touch${IFS}made", "*$(touch made)", "*`touch made`",
                              "*|touch made", "*&touch made", "*\ntouch made", "* > made",
                              "*'; touch made; '", "*\"; touch made; \"", "\"*$(touch made)\""}) {
    glob(pattern);
    EXPECT_FALSE(fs::exists("made")) << pattern;
  }
}

TEST_F(DoGlob, CharactersThatMeanMoreToAShellAreLiteral) {
  for (const char* name : {"x;1", "x$(y)1", "x`y`1", "x'1", "x{a,b}1", "~1", "x$HOME1"}) {
    make(name);
    std::string pattern = name;
    pattern.back() = '*';
    EXPECT_THAT(glob(pattern), ElementsAre(name));
  }
}

TEST_F(DoGlob, NamesThatBeginWithADashAreNoOptions) {
  make("-la");
  EXPECT_THAT(glob("-l*"), ElementsAre("-la"));
  EXPECT_THAT(glob("*"), ElementsAre("-la"));
}

TEST_F(DoGlob, OfASingleDirectoryTheVisibleEntriesAreListed) {
  make("dir/b");
  make("dir/a");
  make("dir/.hidden");
  EXPECT_THAT(glob("d*"), ElementsAre("a", "b"));
}

TEST_F(DoGlob, OfSeveralDirectoriesEachIsListedUnderItsName) {
  make("d1/a");
  make("d2/b");
  EXPECT_THAT(glob("d*"), ElementsAre("d1:", "a", "", "d2:", "b"));
}

TEST_F(DoGlob, FilesComeBeforeDirectories) {
  make("d1/a");
  make("d2");
  EXPECT_THAT(glob("d*"), ElementsAre("d2", "", "d1:", "a"));
}

TEST_F(DoGlob, ADirectoryBesideAWordWithoutAMatchIsListedUnderItsName) {
  make("d1/a");
  EXPECT_THAT(glob("d* missing"), ElementsAre("d1:", "a"));
}

TEST_F(DoGlob, LinesAreTrimmed) {
  make("a ");
  EXPECT_THAT(glob("a*"), ElementsAre("a"));
}

TEST_F(DoGlob, ResultsAreAppended) {
  make("a");
  std::deque<std::string> results{"old"};
  EXPECT_TRUE(doGlob("*", results));
  EXPECT_THAT(results, ElementsAre("old", "a"));
}

TEST_F(DoGlob, AFileNameWithANewlineIsOneResult) {
  make("a\nb");
  EXPECT_THAT(glob("a*"), ElementsAre("a\nb"));
}

TEST_F(DoGlob, WithoutMemoryItFailsInTheWordsThatCallersKnow) {
  make("a");
  std::deque<std::string> results{"old"};
  wrapped::g_memorySuffices = false;
  testing::internal::CaptureStderr();
  EXPECT_FALSE(doGlob("*", results));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "popen error: Cannot allocate memory\n");
  EXPECT_THAT(results, ElementsAre("old"));
  wrapped::g_memorySuffices = true;
}

TEST_F(DoGlob, OddPatternsDoNoHarm) {
  make("[");
  EXPECT_THAT(glob("["), ElementsAre("["));
  EXPECT_THAT(glob("]"), IsEmpty());
  EXPECT_THAT(glob("*\""), ElementsAre("["));
  EXPECT_THAT(glob(" \t*\n "), ElementsAre("["));
}

}  // namespace
}  // namespace pwr
