#include "discovery/macos/QVSystemProfilerUtil.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include "support/HandBuiltArchive.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

const std::vector<std::string> kMiniArgv = {"/usr/sbin/system_profiler", "-xml", "SPDisplaysDataType", "-detailLevel",
                                            "mini"};
const std::vector<std::string> kFullArgv = {"/usr/sbin/system_profiler", "-xml", "SPCameraDataType"};

std::string xmlList(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n" + body + "\n</plist>\n";
}

const std::string kOneReport = xmlList(
    "<array><dict><key>_dataType</key><string>SPDisplaysDataType</string>"
    "<key>_items</key><array><dict><key>_name</key><string>Intel Iris</string></dict></array></dict>"
    "<dict><key>_dataType</key><string>second</string></dict></array>");

DictionaryRef profileOf(const std::string& output) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    source.tool(kMiniArgv, output);
    return QVSystemProfilerUtil::copyProfileForDataType(source, "SPDisplaysDataType");
}

TEST(MacSystemProfilerUtil, RunsTheProfilerWithXmlTheTypeAndTheMiniDetailLevel) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    QVSystemProfilerUtil::copyProfileForDataType(source, "SPDisplaysDataType");
    ASSERT_EQ(source.toolRuns().size(), 1U);
    EXPECT_EQ(source.toolRuns()[0], kMiniArgv);
}

TEST(MacSystemProfilerUtil, TheFirstReportDictionaryIsReturned) {
    const DictionaryRef profile = profileOf(kOneReport);
    ASSERT_TRUE(profile);
    EXPECT_EQ(profile->get("_dataType"), Value("SPDisplaysDataType"));
    const ArrayRef items = profile->get("_items").array();
    ASSERT_TRUE(items && items->size() == 1);
    EXPECT_EQ(items->front().dictionary()->get("_name"), Value("Intel Iris"));
}

TEST(MacSystemProfilerUtil, ATopLevelDictionaryGivesNothing) {
    EXPECT_FALSE(profileOf(xmlList("<dict><key>_items</key><array><dict/></array></dict>")));
    // An error report, as the tools print them.
    EXPECT_FALSE(profileOf(xmlList("<dict><key>Error</key><true/><key>ErrorMessage</key><string>failed</string>"
                                   "<key>ExitCode</key><integer>1</integer></dict>")));
}

TEST(MacSystemProfilerUtil, AnEmptyArrayOrAFirstElementThatIsNoDictionaryGivesNothing) {
    EXPECT_FALSE(profileOf(xmlList("<array/>")));
    EXPECT_FALSE(profileOf(xmlList("<array></array>")));
    EXPECT_FALSE(profileOf(xmlList("<array><string>x</string><dict/></array>")));
    EXPECT_FALSE(profileOf(xmlList("<array><array><dict/></array></array>")));
}

TEST(MacSystemProfilerUtil, NoOutputEmptyOutputOrGarbageGivesNothing) {
    MemorySystemSource notRun(SystemSource::kMacOSPlatform);
    EXPECT_FALSE(QVSystemProfilerUtil::copyProfileForDataType(notRun, "SPDisplaysDataType"));
    EXPECT_FALSE(profileOf(""));
    EXPECT_FALSE(profileOf("system_profiler: unknown data type\n"));
    EXPECT_FALSE(profileOf(std::string("\x00\x01\x02\xff\xfe", 5)));
    EXPECT_FALSE(profileOf("bplist00 but not really a binary property list at all, no trailer"));
}

TEST(MacSystemProfilerUtil, TruncatedOutputGivesNothing) {
    EXPECT_FALSE(profileOf(kOneReport.substr(0, kOneReport.size() / 2)));
}

TEST(MacSystemProfilerUtil, ABinaryListIsReadLikeXml) {
    plist_t report = plist_new_dict();
    plist_dict_set_item(report, "_dataType", plist_new_string("SPDisplaysDataType"));
    plist_t top = plist_new_array();
    plist_array_append_item(top, report);
    const std::string bytes = testing::binaryPlist(top);
    plist_free(top);

    const DictionaryRef profile = profileOf(bytes);
    ASSERT_TRUE(profile);
    EXPECT_EQ(profile->get("_dataType"), Value("SPDisplaysDataType"));
    // The same list cut short is refused.
    EXPECT_FALSE(profileOf(bytes.substr(0, bytes.size() - 5)));
}

TEST(MacSystemProfilerUtil, TheFullListIsAskedWithoutADetailLevel) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    source.tool(kFullArgv, xmlList("<array><dict/><string>x</string></array>"));
    const ArrayRef list = QVSystemProfilerUtil::fullProfileListForDataType(source, "SPCameraDataType");
    ASSERT_TRUE(list);
    EXPECT_EQ(list->size(), 2U);
    EXPECT_EQ(source.toolRuns()[0], kFullArgv);
}

TEST(MacSystemProfilerUtil, AFullListThatIsNoArrayGivesNothing) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    source.tool(kFullArgv, xmlList("<dict/>"));
    EXPECT_FALSE(QVSystemProfilerUtil::fullProfileListForDataType(source, "SPCameraDataType"));
    MemorySystemSource silent(SystemSource::kMacOSPlatform);
    EXPECT_FALSE(QVSystemProfilerUtil::fullProfileListForDataType(silent, "SPCameraDataType"));
}

}  // namespace
}  // namespace tov
