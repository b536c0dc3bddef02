#include "common/QVFileUtil.h"

#include <gtest/gtest.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <string>

#include "support/ChildProcess.h"
#include "support/TestFolder.h"
#include "common/QVFileUtilMessages.h"

namespace tov {
namespace {

constexpr uid_t kNobody = 65534;
constexpr gid_t kNoGroup = 65534;

QVFileUtilError anError(int code) {
    QVFileUtilError error;
    error.code = code;
    error.message = "left over";
    return error;
}

bool sameStatus(const struct stat& left, const struct stat& right) {
    return left.st_uid == right.st_uid && left.st_gid == right.st_gid && left.st_mode == right.st_mode;
}

class QVFileUtilAsRoot : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::runningAsRoot()) GTEST_SKIP() << "needs root";
    }
    testing::TestFolder folder_;
};

TEST(QVFileUtilMessages, EveryCodeHasItsExactText) {
    EXPECT_EQ(QVFileUtilMessages::noPath(), "No path was provided.");
    EXPECT_EQ(QVFileUtilMessages::noItemAtPath(), "No item exists at path.");
    EXPECT_EQ(QVFileUtilMessages::illegalCharactersInPath(), "The path may contain illegal characters.");
    EXPECT_EQ(QVFileUtilMessages::ownerNotChanged("/a b", 1), "Could not change the owner of [/a b].  Error code = [1]");
    EXPECT_EQ(QVFileUtilMessages::permissionsNotChanged("/p", 30),
              "Could not change the permissions of [/p].  Error code = [30]");
    EXPECT_EQ(QVFileUtilMessages::illegalCharactersInCommand("chgrp wheel '/p'"),
              "The command [chgrp wheel '/p'] may contain illegal characters.");
    EXPECT_EQ(QVFileUtilMessages::groupNotChanged("/p", 2), "Failed to change the group to [/p].  Error code = [2]");
    EXPECT_EQ(QVFileUtilMessages::doesNotExist("/p"), "[/p] is not Accessible. doesn't exist");
    EXPECT_EQ(QVFileUtilMessages::notADirectory("/p"), "[/p] is not Accessible. not dir");
    EXPECT_EQ(QVFileUtilMessages::groupIsNotWheel("/p", "{}"),
              "[/p] is not Accessible. group name is not wheel. attributes: {}");
    EXPECT_EQ(QVFileUtilMessages::ownerIsNotRoot("/p", "{}"),
              "[/p] is not Accessible. owner name is not root. attributes: {}");
}

TEST(QVFileUtilPopulateError, FillsAnEmptySlot) {
    QVFileUtilErrorSlot slot;
    QVFileUtil::optionallyPopulateError(&slot, 2, "No item exists at path.");
    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(slot->domain, "QVFileUtilErrorDomain");
    EXPECT_EQ(slot->code, 2);
    EXPECT_EQ(slot->message, "No item exists at path.");
}

TEST(QVFileUtilPopulateError, ReplacesAnEarlierError) {
    QVFileUtilErrorSlot slot = anError(5);
    QVFileUtil::optionallyPopulateError(&slot, 9, "second");
    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(slot->code, 9);
    EXPECT_EQ(slot->message, "second");
}

// Without a slot the failures still show in the answers, and an error meant for no slot
// reaches no other.
TEST(QVFileUtilPopulateError, NoSlotIsAllowed) {
    QVFileUtilErrorSlot other = anError(3);
    QVFileUtil::optionallyPopulateError(nullptr, 1, "ignored");
    ASSERT_TRUE(other.has_value());
    EXPECT_EQ(other->code, 3);

    testing::TestFolder folder;
    EXPECT_FALSE(QVFileUtil::isAccessiblePath(folder.file("missing"), nullptr));
    EXPECT_FALSE(QVFileUtil::isAccessiblePath(folder.write("plain", "x"), nullptr));
    if (geteuid() == 0) {
        EXPECT_FALSE(QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath("", nullptr));
        EXPECT_FALSE(QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(folder.file("missing"), nullptr));
        EXPECT_TRUE(QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(folder.file("plain"), nullptr));
        EXPECT_EQ(testing::lstatOf(folder.file("plain")).st_mode & 07777, 0600u);
    }
}

TEST_F(QVFileUtilAsRoot, FileGetsTheRealUserGroupZeroAndOwnerReadWrite) {
    const std::string path = folder_.write("report.json", "{}");
    ASSERT_EQ(chown(path.c_str(), kNobody, kNoGroup), 0);
    ASSERT_EQ(chmod(path.c_str(), 0664), 0);
    QVFileUtilErrorSlot slot = anError(7);

    EXPECT_TRUE(QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(path, &slot));

    const struct stat status = testing::lstatOf(path);
    EXPECT_EQ(status.st_uid, getuid());
    EXPECT_EQ(status.st_gid, 0u);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    EXPECT_FALSE(slot.has_value()) << slot->message;
}

TEST_F(QVFileUtilAsRoot, FolderGetsTheSameTreatment) {
    const std::string path = folder_.makeFolder("outbox");
    ASSERT_EQ(chown(path.c_str(), kNobody, kNoGroup), 0);
    ASSERT_EQ(chmod(path.c_str(), 0755), 0);

    EXPECT_TRUE(QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(path, nullptr));

    const struct stat status = testing::lstatOf(path);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_uid, getuid());
    EXPECT_EQ(status.st_gid, 0u);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST_F(QVFileUtilAsRoot, MissingPathIsErrorTwo) {
    QVFileUtilErrorSlot slot;
    EXPECT_FALSE(QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(folder_.file("missing"), &slot));
    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(slot->domain, "QVFileUtilErrorDomain");
    EXPECT_EQ(slot->code, 2);
    EXPECT_EQ(slot->message, "No item exists at path.");
}

TEST_F(QVFileUtilAsRoot, EmptyPathIsErrorOne) {
    QVFileUtilErrorSlot slot;
    EXPECT_FALSE(QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath("", &slot));
    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(slot->code, 1);
    EXPECT_EQ(slot->message, "No path was provided.");
}

TEST_F(QVFileUtilAsRoot, PathWithAZeroByteIsErrorThreeAndChangesNothing) {
    const std::string path = folder_.write("real", "x");
    ASSERT_EQ(chown(path.c_str(), kNobody, kNoGroup), 0);
    const struct stat before = testing::lstatOf(path);
    QVFileUtilErrorSlot slot;

    EXPECT_FALSE(QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(path + std::string("\0tail", 5), &slot));

    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(slot->code, 3);
    EXPECT_EQ(slot->message, "The path may contain illegal characters.");
    EXPECT_TRUE(sameStatus(before, testing::lstatOf(path)));
}

TEST_F(QVFileUtilAsRoot, FailureWithoutASlotIsToldByTheResult) {
    EXPECT_FALSE(QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(folder_.file("missing"), nullptr));
    EXPECT_FALSE(QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath("", nullptr));
}

TEST_F(QVFileUtilAsRoot, SymbolicLinkIsChangedItselfNeverItsTarget) {
    const std::string target = folder_.write("elsewhere", "x");
    ASSERT_EQ(chown(target.c_str(), kNobody, kNoGroup), 0);
    ASSERT_EQ(chmod(target.c_str(), 0644), 0);
    const std::string link = folder_.file("planted");
    ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);
    ASSERT_EQ(lchown(link.c_str(), kNobody, kNoGroup), 0);
    const struct stat targetBefore = testing::lstatOf(target);
    QVFileUtilErrorSlot slot;

    EXPECT_TRUE(QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(link, &slot));

    EXPECT_TRUE(sameStatus(targetBefore, testing::lstatOf(target)));
    const struct stat linkStatus = testing::lstatOf(link);
    EXPECT_TRUE(S_ISLNK(linkStatus.st_mode));
    EXPECT_EQ(linkStatus.st_uid, getuid());
    EXPECT_EQ(linkStatus.st_gid, 0u);
    // Systems that cannot set a link's mode say so with error 5.
    if (slot) {
        EXPECT_EQ(slot->code, 5);
        EXPECT_EQ(slot->message.rfind("Could not change the permissions of [" + link + "].  Error code = [", 0), 0u)
            << slot->message;
    }
}

TEST_F(QVFileUtilAsRoot, WithoutRootNothingIsTouchedAndTheAnswerIsTrue) {
    const std::string path = folder_.write("settings.bin", "x");
    ASSERT_EQ(chown(path.c_str(), 123, 456), 0);
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    const struct stat before = testing::lstatOf(path);
    const std::string missing = folder_.file("missing");

    const int verdict = testing::runInChild([&] {
        if (setgroups(0, nullptr) != 0 || setgid(kNoGroup) != 0 || setuid(kNobody) != 0) return 10;
        QVFileUtilErrorSlot slot = anError(4);
        if (!QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(path, &slot)) return 1;
        if (!QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(missing, &slot)) return 2;
        if (!QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath("", nullptr)) return 3;
        if (!slot || slot->code != 4 || slot->message != "left over") return 4;
        return 0;
    }).exitCode;

    EXPECT_EQ(verdict, 0);
    EXPECT_TRUE(sameStatus(before, testing::lstatOf(path)));
}

TEST(QVFileUtilAccessible, MissingPathIsErrorEight) {
    testing::TestFolder folder;
    const std::string path = folder.file("missing");
    QVFileUtilErrorSlot slot;
    EXPECT_FALSE(QVFileUtil::isAccessiblePath(path, &slot));
    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(slot->domain, "QVFileUtilErrorDomain");
    EXPECT_EQ(slot->code, 8);
    EXPECT_EQ(slot->message, "[" + path + "] is not Accessible. doesn't exist");
}

TEST(QVFileUtilAccessible, FileIsErrorNine) {
    testing::TestFolder folder;
    const std::string path = folder.write("file", "x");
    QVFileUtilErrorSlot slot;
    EXPECT_FALSE(QVFileUtil::isAccessiblePath(path, &slot));
    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(slot->code, 9);
    EXPECT_EQ(slot->message, "[" + path + "] is not Accessible. not dir");
}

TEST(QVFileUtilAccessible, SymbolicLinkToAFolderIsNotAFolder) {
    testing::TestFolder folder;
    const std::string link = folder.file("link");
    ASSERT_EQ(symlink(folder.path().c_str(), link.c_str()), 0);
    QVFileUtilErrorSlot slot;
    EXPECT_FALSE(QVFileUtil::isAccessiblePath(link, &slot));
    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(slot->code, 9);
}

// The attributes part of an error 10 or 11 message, read back.
nlohmann::json attributesOf(const std::string& message, const std::string& prefix) {
    EXPECT_EQ(message.rfind(prefix, 0), 0u) << message;
    return nlohmann::json::parse(message.substr(prefix.size()), nullptr, false);
}

TEST_F(QVFileUtilAsRoot, FolderOfAnotherGroupIsErrorTen) {
    const std::string path = folder_.makeFolder("outbox");
    ASSERT_EQ(chown(path.c_str(), 0, kNoGroup), 0);
    ASSERT_EQ(chmod(path.c_str(), 0700), 0);
    QVFileUtilErrorSlot slot;

    EXPECT_FALSE(QVFileUtil::isAccessiblePath(path, &slot));

    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(slot->code, 10);
    const nlohmann::json attributes =
        attributesOf(slot->message, "[" + path + "] is not Accessible. group name is not wheel. attributes: ");
    EXPECT_EQ(attributes.value("type", ""), "directory");
    EXPECT_EQ(attributes.value("groupId", 0u), kNoGroup);
    EXPECT_EQ(attributes.value("ownerId", 1u), 0u);
    EXPECT_EQ(attributes.value("owner", ""), "root");
    EXPECT_EQ(attributes.value("permissions", ""), "0700");
}

TEST_F(QVFileUtilAsRoot, FolderOfAnotherOwnerIsErrorEleven) {
    const std::string path = folder_.makeFolder("outbox");
    ASSERT_EQ(chown(path.c_str(), kNobody, 0), 0);
    QVFileUtilErrorSlot slot;

    EXPECT_FALSE(QVFileUtil::isAccessiblePath(path, &slot));

    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(slot->code, 11);
    const nlohmann::json attributes =
        attributesOf(slot->message, "[" + path + "] is not Accessible. owner name is not root. attributes: ");
    EXPECT_EQ(attributes.value("ownerId", 0u), kNobody);
    EXPECT_EQ(attributes.value("groupId", 1u), 0u);
}

TEST_F(QVFileUtilAsRoot, GroupIsCheckedBeforeOwner) {
    const std::string path = folder_.makeFolder("outbox");
    ASSERT_EQ(chown(path.c_str(), kNobody, kNoGroup), 0);
    QVFileUtilErrorSlot slot;
    EXPECT_FALSE(QVFileUtil::isAccessiblePath(path, &slot));
    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(slot->code, 10);
}

TEST_F(QVFileUtilAsRoot, FolderOfRootAndGroupZeroIsAccessible) {
    const std::string path = folder_.makeFolder("outbox");
    ASSERT_EQ(chown(path.c_str(), 0, 0), 0);
    QVFileUtilErrorSlot slot;
    EXPECT_TRUE(QVFileUtil::isAccessiblePath(path, &slot));
    EXPECT_FALSE(slot.has_value());
    EXPECT_TRUE(QVFileUtil::isAccessiblePath(path, nullptr));
}

TEST_F(QVFileUtilAsRoot, RepairedFolderIsAccessible) {
    const std::string path = folder_.makeFolder("delta");
    ASSERT_EQ(chown(path.c_str(), kNobody, kNoGroup), 0);
    EXPECT_FALSE(QVFileUtil::isAccessiblePath(path, nullptr));
    EXPECT_TRUE(QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(path, nullptr));
    EXPECT_TRUE(QVFileUtil::isAccessiblePath(path, nullptr));
}

}  // namespace
}  // namespace tov
