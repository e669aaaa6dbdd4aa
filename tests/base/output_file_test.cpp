// Files that take their place when they are whole, and the paths that lead to them.
#include "base/output/output_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "base/errors.h"
#include "support/temp_file.h"
#include "support/temp_folder.h"

namespace {

namespace fs = std::filesystem;
using zel::OutputFile;
using zeltest::failureOf;

class OutputFileTest : public testing::Test {
 protected:
  [[nodiscard]] std::string path(const std::string& name) const { return place / name; }
  void put(const std::string& name, const std::string& text) const { files.write(name, text); }
  [[nodiscard]] std::string text(const std::string& name) const {
    return fs::exists(place / name) ? files.read(name) : "";
  }
  [[nodiscard]] std::size_t fileCount() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(place), {}));
  }
  [[nodiscard]] bool write(const std::string& name, const std::string& text) const {
    const auto file = OutputFile::open(path(name));
    return file != nullptr && file->write(text) && file->publish();
  }
  [[nodiscard]] mode_t modeOf(const std::string& name) const {
    struct stat status {};
    return ::stat(path(name).c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
  }

  const zeltest::TempFolder files;
  const fs::path& place = files.folder();
};

TEST_F(OutputFileTest, AppearsWholeOrNotAtAll) {
  put("old", "old");
  for (const char* const name : {"old", "new"}) {
    const bool existed = fs::exists(path(name));
    for (const std::size_t length : {0u, 1u, 1000000u}) {
      const std::string content(length, 'x');
      const auto before = text(name);
      {
        const auto abandoned = OutputFile::open(path(name));
        ASSERT_TRUE(abandoned->write(content) && abandoned->finish());
        EXPECT_EQ(text(name), before);
      }
      EXPECT_EQ(fs::exists(path(name)), existed || length > 0);
      ASSERT_TRUE(write(name, content));
      EXPECT_TRUE(text(name) == content);
    }
  }
  EXPECT_EQ(fileCount(), 2u);
}

TEST_F(OutputFileTest, NewFilesObeyTheMaskAndOldOnesKeepTheirMode) {
  const mode_t before = ::umask(027);
  ASSERT_TRUE(write("new", "text"));
  ::umask(before);
  EXPECT_EQ(modeOf("new"), 0640u);
  for (const mode_t mode : {0600u, 0666u, 0755u}) {
    ::chmod(path("new").c_str(), mode);
    ASSERT_TRUE(write("new", "text"));
    EXPECT_EQ(modeOf("new"), mode);
  }
}

TEST_F(OutputFileTest, LinksStayAndWhatTheyLeadToIsReplaced) {
  fs::create_directory(place / "folder");
  put("folder/target", "old");
  fs::create_symlink("folder/target", place / "link");
  fs::create_symlink(place / "link", place / "chain");
  fs::create_symlink("folder/absent", place / "dangling");
  ASSERT_TRUE(write("chain", "new") && write("dangling", "first"));
  EXPECT_EQ(text("folder/target"), "new");
  EXPECT_EQ(text("folder/absent"), "first");
  for (const char* const name : {"link", "chain", "dangling"})
    EXPECT_TRUE(fs::is_symlink(place / name)) << name;
  EXPECT_EQ(fileCount(), 4u);
}

TEST_F(OutputFileTest, OpenFilesAndPipesAreWrittenThroughTheirNames) {
  put("file", "a longer old text");
  const int descriptor = ::open(path("file").c_str(), O_RDWR | O_CLOEXEC);
  const std::string name = "/proc/self/fd/" + std::to_string(descriptor);
  ASSERT_TRUE(OutputFile::open(name)->publish()) << "without a text it is empty";
  char byte = 0;
  EXPECT_EQ(::pread(descriptor, &byte, 1, 0), 0);
  const auto file = OutputFile::open(name);
  ASSERT_TRUE(file->write("x") && file->publish());
  EXPECT_EQ(::pread(descriptor, &byte, 1, 0), 1) << "the same file, not one in its place";
  ::close(descriptor);

  ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
  zel::requireWritable(path("pipe"));
  const int reader = ::open(path("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_TRUE(write("pipe", "y"));
  EXPECT_EQ(::read(reader, &byte, 1), 1);
  EXPECT_EQ(byte, 'y');
  ::close(reader);
  EXPECT_FALSE(OutputFile::open("/dev/full")->write(std::string(1000000, 'x')));
  EXPECT_FALSE(fs::is_regular_file("/dev/full"));
}

TEST_F(OutputFileTest, TryingLeavesNoTrace) {
  put("old", "old");
  zel::requireWritable(path("old"));
  zel::requireWritable(path("new"));
  EXPECT_EQ(text("old"), "old");
  EXPECT_EQ(fileCount(), 1u);
  for (const std::string& name :
       {path(""), path("folder/file"), path("old/file"), path("new/"), path(std::string(300, 'x'))})
    EXPECT_EQ(failureOf<zel::AppException>([&] { zel::requireWritable(name); }),
              "failed to open " + name + ".");
  EXPECT_EQ(failureOf<zel::AppException>([] { zel::requireWritable(""); }), "missing file path.");
}

TEST_F(OutputFileTest, CleaningUpRemovesWhatIsUnfinished) {
  put("old", "old");
  std::vector<std::unique_ptr<OutputFile>> files;
  for (int i = 0; i < 20; ++i) files.push_back(OutputFile::open(path(i % 2 == 0 ? "old" : "new")));
  ASSERT_TRUE(files[0]->publish());
  EXPECT_EQ(fileCount(), 20u);
  zel::removeUnfinishedFiles();
  EXPECT_EQ(fileCount(), 1u);
  EXPECT_FALSE(files[1]->publish());
}

TEST_F(OutputFileTest, TwoPathsToOneFile) {
  put("file", "");
  put("other", "");
  fs::create_symlink("file", place / "link");
  fs::create_hard_link(place / "file", place / "twin");
  fs::create_symlink("absent", place / "dangling");
  const auto same = [this](const char* a, const char* b) {
    return zel::leadToSameFile(path(a), path(b));
  };
  for (const char* const name : {"file", "./file", "link", "twin"}) EXPECT_TRUE(same("file", name));
  EXPECT_TRUE(same("absent", "dangling"));
  EXPECT_TRUE(same("absent", "./absent"));
  for (const char* const name : {"other", "absent", "dangling", "missing/file"})
    EXPECT_FALSE(same("file", name)) << name;
  EXPECT_FALSE(same("absent", "absent2"));
  EXPECT_FALSE(zel::leadToSameFile("/dev/null", "/dev/null"));
}

}  // namespace
