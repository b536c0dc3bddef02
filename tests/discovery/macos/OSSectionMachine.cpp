#include "OSSectionMachine.h"

#include <plist/plist.h>

#include "discovery/SystemFacts.h"
#include "support/HandBuiltArchive.h"

namespace tov::testing {

std::string systemVersionWith(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n" + body + "</dict>\n</plist>\n";
}

std::string binaryTextDictionary(std::initializer_list<std::string> keysAndTexts) {
    plist_t dictionary = plist_new_dict();
    for (auto item = keysAndTexts.begin(); item != keysAndTexts.end() && item + 1 != keysAndTexts.end(); item += 2) {
        plist_dict_set_item(dictionary, item->c_str(), plist_new_string((item + 1)->c_str()));
    }
    std::string bytes = binaryPlist(dictionary);
    plist_free(dictionary);
    return bytes;
}

Value dictionaryOf(std::initializer_list<std::pair<const char*, Value>> entries) {
    DictionaryRef dictionary = makeDictionary();
    for (const auto& [key, value] : entries) dictionary->set(key, value);
    return Value(dictionary);
}

std::shared_ptr<MemorySystemSource> annasMacBook() {
    auto source = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
    DictionaryRef platformExpert = makeDictionary();
    platformExpert->set("path", Value("IOService:/MacBookPro16,1"));
    platformExpert->set("properties", dictionaryOf({{"IOPlatformSerialNumber", Value("C02XG0FDH7JY")}}));
    source->file("/System/Library/CoreServices/SystemVersion.plist", kSystemVersionXml)
        .fact(facts::kMacConsoleUser, "", dictionaryOf({{"user", Value("anna")}, {"processUser", Value("root")}}))
        .fact(facts::kHostAndLocale, "",
              dictionaryOf({{"localizedName", Value("Anna's MacBook Pro")}, {"localeIdentifier", Value("en_US")}}))
        .fact(facts::kDirectoryUser, "anna",
              dictionaryOf({{"metaRecordName",
                               Value(makeArray({Value("CN=anna,CN=Users,DC=corp,DC=example,DC=com")}))}}))
        .fact(facts::kSysctl, "hw.machine", Value("x86_64"))
        .fact(facts::kSysctl, "hw.model", Value("MacBookPro16,1"))
        .tool({"/usr/sbin/bless", "--info"}, kBlessInfo)
        .link("/Volumes/Macintosh HD", "/")
        .folder("/Volumes/Backup")
        .fact(facts::kVolumeIdentifier, "/System/Library/CoreServices", dictionaryOf({{"identifier", Value("disk1s5")}}))
        .fact(facts::kVolumeIdentifier, "/Volumes/Macintosh HD", dictionaryOf({{"identifier", Value("disk1s5")}}))
        .fact(facts::kVolumeIdentifier, "/Volumes/Backup", dictionaryOf({{"identifier", Value("disk2s1")}}))
        .file(kAnnaPreferences, binaryTextDictionary({"AppleLanguages0", "de-CH", "AppleLocale", "de_CH"}))
        .file("/usr/bin/csrutil", "\xCF\xFA\xED\xFE")
        .tool({"/usr/bin/csrutil", "status"}, "System Integrity Protection status: enabled.\n")
        .fact(facts::kRegistry, "IOPlatformExpertDevice", Value(makeArray({Value(platformExpert)})));
    return source;
}

}  // namespace tov::testing
