// Files as byte stores: results of everything that can go wrong with a path.

#include "host/avi/file_store.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <random>
#include <string>

namespace tavo {
namespace {

namespace fs = std::filesystem;

class FileStoreTest : public testing::Test {
  protected:
    void SetUp() override {
        // The same program may run twice at once, from two builds.
        const std::string number = std::to_string(std::random_device()());
        folder_ = fs::temp_directory_path() / ("tavo file store " + number);
        fs::remove_all(folder_);
        fs::create_directories(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    fs::path folder_;
};

TEST_F(FileStoreTest, WritesReadsAndTruncates) {
    FileStore file;
    EXPECT_FALSE(file.IsOpen());
    ASSERT_EQ(file.Create(folder_ / "a"), IoResult::Ok);
    EXPECT_TRUE(file.IsOpen());
    const std::array data = {std::byte{1}, std::byte{2}, std::byte{3}, std::byte{4}};
    EXPECT_EQ(file.WriteAt(0, data), IoResult::Ok);
    EXPECT_EQ(file.WriteAt(2, data), IoResult::Ok);
    EXPECT_EQ(file.Size(), 6u);
    std::array<std::byte, 3> read{};
    EXPECT_EQ(file.ReadAt(1, read), IoResult::Ok);
    EXPECT_EQ(read, (std::array{std::byte{2}, std::byte{1}, std::byte{2}}));
    EXPECT_EQ(file.ReadAt(4, read), IoResult::ShortRead);
    EXPECT_EQ(file.ReadAt(7, read), IoResult::ShortRead);
    EXPECT_EQ(file.Truncate(3), IoResult::Ok);
    EXPECT_EQ(file.Size(), 3u);
    EXPECT_EQ(file.Close(), IoResult::Ok);
    EXPECT_EQ(file.Close(), IoResult::Ok);
}

TEST_F(FileStoreTest, OffsetsBeyondFourGibibytes) {
    FileStore file;
    ASSERT_EQ(file.Create(folder_ / "large"), IoResult::Ok);
    constexpr uint64_t kOffset = (uint64_t{5} << 30) + 1;
    const std::array data = {std::byte{7}};
    ASSERT_EQ(file.WriteAt(kOffset, data), IoResult::Ok);
    EXPECT_EQ(file.Size(), kOffset + 1);
    std::array<std::byte, 1> read{};
    EXPECT_EQ(file.ReadAt(kOffset, read), IoResult::Ok);
    EXPECT_EQ(read, data);
    EXPECT_EQ(file.Truncate(10), IoResult::Ok);
    EXPECT_EQ(file.Size(), 10u);
}

TEST_F(FileStoreTest, CreateEmptiesWhatIsThere) {
    FileStore file;
    ASSERT_EQ(file.Create(folder_ / "a"), IoResult::Ok);
    ASSERT_EQ(file.WriteAt(0, std::array{std::byte{1}}), IoResult::Ok);
    ASSERT_EQ(file.Create(folder_ / "a"), IoResult::Ok);
    EXPECT_EQ(file.Size(), 0u);
}

TEST_F(FileStoreTest, PathsThatCannotBe) {
    FileStore file;
    EXPECT_EQ(file.OpenForReading(folder_ / "missing"), IoResult::NotFound);
    EXPECT_EQ(file.OpenForReading(folder_ / "no folder" / "missing"), IoResult::NotFound);
    EXPECT_EQ(file.Create(folder_ / "no folder" / "a"), IoResult::NotFound);
    EXPECT_EQ(file.Create(folder_), IoResult::AccessDenied);
    EXPECT_FALSE(file.IsOpen());
}

#ifndef _WIN32
TEST(FileStore, FullDisk) {
    FileStore file;
    ASSERT_EQ(file.Create("/dev/full"), IoResult::Ok);
    EXPECT_EQ(file.WriteAt(0, std::array{std::byte{1}}), IoResult::DiskFull);
}
#endif

}  // namespace
}  // namespace tavo
