#include "client/src/common/pw_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace pwr {
namespace {

namespace fs = std::filesystem;
using qumetra::test::LogCapture;
using qumetra::test::readFile;
using qumetra::test::TempDir;
using qumetra::test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::string openWarning(const std::string& path, const std::string& reason) {
  return "WARNING: Failed to open file: " + path + ", " + reason + "\n";
}

const std::string kMissing = "errnum: 2, error: No such file or directory";
const std::string kLoop = "errnum: 40, error: Too many levels of symbolic links";
const std::string kNoDirectory = "errnum: 20, error: Not a directory";

/// A log, a place for files, and a handle that is closed at the end.
class FilesTest : public testing::Test {
 protected:
  ~FilesTest() override {
    if (m_file != nullptr) {
      std::fclose(m_file);
    }
  }

  bool open(const std::string& path, const std::string& mode) {
    return openFileHandle(&m_file, path, mode);
  }
  void closeAfterWriting(const std::string& text) {
    std::fputs(text.c_str(), m_file);
    std::fclose(m_file);
    m_file = nullptr;
  }

  LogCapture m_log;
  TempDir m_dir;
  FILE* m_file = nullptr;
};

using OpenFileHandle = FilesTest;

TEST_F(OpenFileHandle, ModeWMakesTheDirectoriesAndTheFile) {
  ASSERT_TRUE(open(m_dir.file("a/b/c.csv"), "wb"));
  closeAfterWriting("text");
  EXPECT_EQ(readFile(m_dir.file("a/b/c.csv")), "text");
  EXPECT_THAT(m_log.warnings(), IsEmpty());
}

TEST_F(OpenFileHandle, ModeWGivesPermissionsToReadForAllAndToWriteForTheOwner) {
  const mode_t former = ::umask(0);
  ASSERT_TRUE(open(m_dir.file("c.csv"), "w"));
  ::umask(former);
  struct stat status {};
  ASSERT_EQ(::stat(m_dir.file("c.csv").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0644U);
}

TEST_F(OpenFileHandle, ModeWEmptiesAFile) {
  writeFile(m_dir.file("c"), "old text");
  ASSERT_TRUE(open(m_dir.file("c"), "w"));
  closeAfterWriting("new");
  EXPECT_EQ(readFile(m_dir.file("c")), "new");
}

TEST_F(OpenFileHandle, ModeWCanReadBackWithAPlus) {
  ASSERT_TRUE(open(m_dir.file("c"), "w+b"));
  std::fputc('x', m_file);
  std::rewind(m_file);
  EXPECT_EQ(std::fgetc(m_file), 'x');
}

TEST_F(OpenFileHandle, ModeADoesNotMakeTheFileButItsDirectories) {
  EXPECT_FALSE(open(m_dir.file("a/c"), "a"));
  EXPECT_EQ(m_file, nullptr);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_TRUE(fs::is_directory(m_dir.file("a")));
  EXPECT_FALSE(fs::exists(m_dir.file("a/c")));
}

TEST_F(OpenFileHandle, ModeAAppends) {
  writeFile(m_dir.file("c"), "old,");
  ASSERT_TRUE(open(m_dir.file("c"), "ab"));
  closeAfterWriting("new");
  EXPECT_EQ(readFile(m_dir.file("c")), "old,new");
}

TEST_F(OpenFileHandle, ModeACanReadBackWithAPlus) {
  writeFile(m_dir.file("c"), "old,");
  ASSERT_TRUE(open(m_dir.file("c"), "a+b"));
  std::fputs("new", m_file);
  std::rewind(m_file);
  std::string text(7, '\0');
  EXPECT_EQ(std::fread(text.data(), 1, text.size(), m_file), text.size());
  EXPECT_EQ(text, "old,new");
}

TEST_F(OpenFileHandle, ModeRReads) {
  writeFile(m_dir.file("c"), "x");
  ASSERT_TRUE(open(m_dir.file("c"), "r"));
  EXPECT_EQ(std::fgetc(m_file), 'x');
}

TEST_F(OpenFileHandle, ModeROnAMissingFileLogsTheFailureAndMakesNoDirectory) {
  const std::string path = m_dir.file("a/c");
  EXPECT_FALSE(open(path, "r"));
  EXPECT_EQ(m_file, nullptr);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(fs::exists(m_dir.file("a")));
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, openWarning(path, kMissing)),
                                            Pair(2, openWarning(path, kMissing))));
  EXPECT_THAT(m_log.errors(), IsEmpty());
}

TEST_F(OpenFileHandle, OtherModesAreFalseWithoutAMessage) {
  EXPECT_FALSE(open(m_dir.file("a/c"), "x"));
  EXPECT_FALSE(open(m_dir.file("a/c"), ""));
  EXPECT_FALSE(fs::exists(m_dir.file("a")));
  EXPECT_THAT(m_log.warnings(), IsEmpty());
}

TEST_F(OpenFileHandle, AFailureStoresANullHandle) {
  m_file = stdin;
  EXPECT_FALSE(open(m_dir.file("c"), "x"));
  EXPECT_EQ(m_file, nullptr);
}

TEST_F(OpenFileHandle, AFailedOpenInModeWWarnsTwice) {
  fs::create_symlink(m_dir.file("target"), m_dir.file("link"));
  const std::string path = m_dir.file("link");
  EXPECT_FALSE(open(path, "w"));
  EXPECT_EQ(errno, ELOOP);
  EXPECT_THAT(m_log.warnings(),
              ElementsAre(Pair(2, openWarning(path, kLoop)), Pair(2, openWarning(path, kLoop))));
}

TEST_F(OpenFileHandle, WritingDoesNotFollowASymbolicLinkButReadingDoes) {
  writeFile(m_dir.file("target"), "x");
  fs::create_symlink(m_dir.file("target"), m_dir.file("link"));
  EXPECT_FALSE(open(m_dir.file("link"), "w"));
  EXPECT_FALSE(open(m_dir.file("link"), "a"));
  EXPECT_TRUE(open(m_dir.file("link"), "r"));
  EXPECT_EQ(readFile(m_dir.file("target")), "x");
}

TEST_F(OpenFileHandle, DirectoriesThatCannotBeMadeGiveTheirOwnWarningFirst) {
  writeFile(m_dir.file("file"), "");
  const std::string path = m_dir.file("file/sub/c");
  testing::internal::CaptureStderr();
  EXPECT_FALSE(open(path, "w"));
  EXPECT_EQ(errno, ENOTDIR);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "mkdir error: Not a directory\n");
  EXPECT_THAT(m_log.warnings(),
              ElementsAre(Pair(2, "WARNING: Error creating file: " + path + "!\n"),
                          Pair(2, openWarning(path, kNoDirectory))));
}

TEST_F(OpenFileHandle, AModeThatTheHandleCannotHaveKeepsItsReason) {
  writeFile(m_dir.file("c"), "x");
  EXPECT_FALSE(open(m_dir.file("c"), "r+"));
  EXPECT_EQ(errno, EINVAL);
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, openWarning(m_dir.file("c"),
                                                                "errnum: 22, error: Invalid "
                                                                "argument"))));
}

constexpr const char* kNoPermission =
    "ERROR: Cannot create output files. Check if you have write permissions to result "
    "directory.\n";

/// A path that nobody may open for writing: the superuser is stopped by being one of the others.
class ForbiddenDirectory {
 public:
  explicit ForbiddenDirectory(const TempDir& dir) : m_path(dir.file("forbidden")) {
    writeFile(m_path + "/c", "x");
    ::chmod(m_path.c_str(), 0);
    if (::geteuid() == 0) {
      m_changed = ::seteuid(kNobody) == 0;
    }
  }
  ForbiddenDirectory(const ForbiddenDirectory&) = delete;
  ForbiddenDirectory& operator=(const ForbiddenDirectory&) = delete;
  ~ForbiddenDirectory() {
    if (m_changed) {
      EXPECT_EQ(::seteuid(0), 0);
    }
    ::chmod(m_path.c_str(), 0700);
  }
  std::string file() const { return m_path + "/c"; }

 private:
  static constexpr uid_t kNobody = 65534;
  std::string m_path;
  bool m_changed = false;
};

TEST_F(OpenFileHandle, ADeniedFileIsAnErrorToo) {
  const ForbiddenDirectory forbidden(m_dir);
  EXPECT_FALSE(open(forbidden.file(), "r"));
  EXPECT_EQ(errno, EACCES);
  EXPECT_THAT(m_log.errors(), ElementsAre(Pair(1, kNoPermission)));
}

TEST_F(OpenFileHandle, ADeniedFileIsAnErrorAtVerbosityOne) {
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  const ForbiddenDirectory forbidden(m_dir);
  EXPECT_FALSE(open(forbidden.file(), "r"));
  EXPECT_THAT(m_log.errors(), ElementsAre(Pair(1, kNoPermission)));
  EXPECT_THAT(m_log.warnings(), IsEmpty());
}

TEST_F(OpenFileHandle, AtVerbosityZeroADeniedFileIsSilent) {
  m_log.environment().verbosity = PluginEnvironment::kQuiet;
  const ForbiddenDirectory forbidden(m_dir);
  EXPECT_FALSE(open(forbidden.file(), "r"));
  EXPECT_EQ(errno, EACCES);
  EXPECT_THAT(m_log.errors(), IsEmpty());
}

TEST_F(FilesTest, OpenStoresTheDescriptor) {
  int descriptor = -1;
  EXPECT_EQ(pw_open(&descriptor, m_dir.file("c"), O_CREAT | O_RDWR), 0);
  EXPECT_EQ(::write(descriptor, "x", 1), 1);
  ::close(descriptor);
  EXPECT_EQ(readFile(m_dir.file("c")), "x");
}

TEST_F(FilesTest, WithoutAPlaceForTheDescriptorNothingIsOpened) {
  EXPECT_EQ(pw_open(nullptr, m_dir.file("c"), O_CREAT | O_RDWR), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_FALSE(fs::exists(m_dir.file("c")));
}

TEST_F(FilesTest, AFailedOpenWarnsAndKeepsErrno) {
  int descriptor = 7;
  const std::string path = m_dir.file("c");
  EXPECT_NE(pw_open(&descriptor, path, O_RDONLY), 0);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(descriptor, -1);
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, openWarning(path, kMissing))));
}

TEST_F(FilesTest, ExistenceIsThatOfAnything) {
  writeFile(m_dir.file("c"), "");
  EXPECT_TRUE(pw_fileExists(m_dir.file("c")));
  EXPECT_TRUE(pw_fileExists(m_dir.path().string()));
  EXPECT_FALSE(pw_fileExists(m_dir.file("d")));
  EXPECT_THAT(m_log.warnings(), IsEmpty());
}

TEST_F(FilesTest, ADirectoryIsToldFromAFile) {
  writeFile(m_dir.file("c"), "");
  EXPECT_TRUE(isDir(m_dir.path().string()));
  EXPECT_FALSE(isDir(m_dir.file("c")));
  EXPECT_TRUE(qm_dirExists(m_dir.path().string()));
  EXPECT_FALSE(qm_dirExists(m_dir.file("c")));
  EXPECT_THAT(m_log.warnings(), IsEmpty());
}

TEST_F(FilesTest, OnlyIsDirWarnsOfWhatIsNotThere) {
  const std::string path = m_dir.file("d");
  EXPECT_FALSE(qm_dirExists(path));
  EXPECT_THAT(m_log.warnings(), IsEmpty());
  EXPECT_FALSE(isDir(path));
  EXPECT_THAT(m_log.warnings(), ElementsAre(Pair(2, "WARNING: stat error in isDir for file " +
                                                        path + ": No such file or directory\n")));
}

TEST_F(FilesTest, ReopeningPutsAnotherFileInPlace) {
  ASSERT_TRUE(open(m_dir.file("c"), "w"));
  FILE* reopened = nullptr;
  ASSERT_EQ(pw_freopen(&reopened, m_dir.file("d"), "w", m_file), 0);
  m_file = reopened;
  closeAfterWriting("x");
  EXPECT_EQ(readFile(m_dir.file("d")), "x");
}

TEST_F(FilesTest, AFailedReopeningStoresNull) {
  // Of a stream that could not be opened anew only the standard ones leave nothing behind.
  FILE* reopened = stdin;
  EXPECT_EQ(pw_freopen(&reopened, m_dir.file("missing/d"), "r", stdin), -1);
  EXPECT_EQ(reopened, nullptr);
}

TEST_F(FilesTest, ReopeningNoStreamStoresNull) {
  FILE* reopened = stdin;
  EXPECT_EQ(pw_freopen(&reopened, m_dir.file("d"), "w", nullptr), -1);
  EXPECT_EQ(reopened, nullptr);
  EXPECT_EQ(pw_freopen(nullptr, m_dir.file("d"), "w", nullptr), -1);
}

TEST_F(FilesTest, Dup2LetsOneStreamWriteWhereTheOtherDoes) {
  ASSERT_TRUE(open(m_dir.file("c"), "w"));
  FILE* other = nullptr;
  ASSERT_TRUE(openFileHandle(&other, m_dir.file("d"), "w"));
  EXPECT_EQ(pw_dup2(m_file, other), 0);
  std::fputs("x", other);
  std::fclose(other);
  EXPECT_EQ(readFile(m_dir.file("c")), "x");
  EXPECT_EQ(readFile(m_dir.file("d")), "");
}

TEST_F(FilesTest, Dup2OfNoDescriptorFails) {
  ASSERT_TRUE(open(m_dir.file("c"), "w"));
  std::string memory(8, '\0');
  FILE* const withoutDescriptor = ::fmemopen(memory.data(), memory.size(), "w");
  EXPECT_EQ(pw_dup2(withoutDescriptor, m_file), -1);
  std::fclose(withoutDescriptor);
  EXPECT_EQ(pw_dup2(nullptr, m_file), -1);
  EXPECT_EQ(pw_dup2(m_file, nullptr), -1);
}

}  // namespace
}  // namespace pwr
