#include "common/ZipMemberReader.h"

#include <gtest/gtest.h>
#include <zip.h>

#include <string>
#include <utility>
#include <vector>

#include "common/ZipMembers.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::TestFolder;

// A member name and its contents; a name ending in "/" is a folder entry.
using Member = std::pair<std::string, std::string>;

void writeZip(const std::string& path, const std::vector<Member>& members) {
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    ASSERT_NE(archive, nullptr);
    for (const auto& [name, contents] : members) {
        if (name.back() == '/') {
            ASSERT_GE(zip_dir_add(archive, name.c_str(), 0), 0);
            continue;
        }
        zip_source_t* source = zip_source_buffer(archive, contents.data(), contents.size(), 0);
        ASSERT_GE(zip_file_add(archive, name.c_str(), source, 0), 0);
    }
    ASSERT_EQ(zip_close(archive), 0);
}

// Everything the reader gives, chunkBytes at a time; "<failed>" appended on a failure.
std::string readInChunks(ZipMemberReader& reader, std::size_t chunkBytes) {
    std::string contents;
    std::vector<char> buffer(chunkBytes);
    for (;;) {
        const std::int64_t count = reader.read(buffer.data(), buffer.size());
        if (count < 0) return contents + "<failed>";
        if (count == 0) return contents;
        contents.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

TEST(ZipMemberReader, GivesTheFileMembersOneAfterTheOtherAndSkipsFolders) {
    TestFolder folder;
    const std::string path = folder.file("two.zip");
    writeZip(path, {{"a.txt", "hello "}, {"dir/", ""}, {"dir/b.txt", "world"}, {"empty", ""}});
    ZipMemberReader reader(path);
    ASSERT_TRUE(reader.isOpen());
    EXPECT_EQ(readInChunks(reader, 4), "hello world");
    EXPECT_EQ(reader.read(nullptr, 0), 0);
}

TEST(ZipMemberReader, AnArchiveWithoutMembersIsEmpty) {
    TestFolder folder;
    const std::string path = folder.file("folders.zip");
    writeZip(path, {{"only/", ""}});
    ZipMemberReader reader(path);
    ASSERT_TRUE(reader.isOpen());
    EXPECT_EQ(readInChunks(reader, 16), "");
}

TEST(ZipMemberReader, AFileThatIsNotAnArchiveIsNotOpen) {
    TestFolder folder;
    ZipMemberReader reader(folder.write("text.zip", std::string("PK\x03\x04", 4) + "not an archive"));
    EXPECT_FALSE(reader.isOpen());
    char buffer[8];
    EXPECT_EQ(reader.read(buffer, sizeof buffer), -1);
    EXPECT_FALSE(ZipMemberReader(folder.file("missing.zip")).isOpen());
}

TEST(ZipMemberReader, ADamagedMemberFailsTheRead) {
    TestFolder folder;
    const std::string path = folder.file("damaged.zip");
    const std::string contents(4096, 'x');
    writeZip(path, {{"big", contents}});
    std::string bytes = testing::readFile(path);
    const std::size_t data = bytes.find("big") + 3;  // the deflated data follows the name
    for (std::size_t index = data; index < data + 8; ++index) bytes[index] = static_cast<char>(~bytes[index]);
    testing::writeFile(path, bytes);
    ZipMemberReader reader(path);
    ASSERT_TRUE(reader.isOpen());
    const std::string read = readInChunks(reader, 1024);
    EXPECT_TRUE(read.ends_with("<failed>")) << read.size();
    EXPECT_FALSE(readZipMembers(path, 1 << 20).has_value());
}

TEST(ZipMembers, ReadsEveryMemberWithinTheBoundAndNothingBeyondIt) {
    TestFolder folder;
    const std::string path = folder.file("bound.zip");
    writeZip(path, {{"a", "12345"}, {"b", "678"}});
    EXPECT_EQ(readZipMembers(path, 8), "12345678");
    EXPECT_FALSE(readZipMembers(path, 7).has_value());
}

}  // namespace
}  // namespace tov
