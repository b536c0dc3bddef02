#include "support/SysfsBlockTree.h"

namespace tov::testing {

SysfsBlockTree& SysfsBlockTree::disk(const std::string& name, const std::string& devicesPath,
                                     const std::string& dev, std::uint64_t sectors) {
    deviceFiles(name, devicesPath, dev, sectors);
    source_->link("/sys/block/" + name, ".." + devicesPath.substr(4));
    return *this;
}

SysfsBlockTree& SysfsBlockTree::partition(const std::string& disk, const std::string& name, unsigned number,
                                          const std::string& dev, std::uint64_t sectors) {
    deviceFiles(name, folderOf(disk) + "/" + name, dev, sectors);
    source_->file(folderOf(name) + "/partition", std::to_string(number) + "\n");
    return *this;
}

void SysfsBlockTree::deviceFiles(const std::string& name, const std::string& folder, const std::string& dev,
                                 std::uint64_t sectors) {
    folders_[name] = folder;
    source_->folder(folder + "/holders");
    source_->file(folder + "/dev", dev + "\n");
    source_->file(folder + "/size", std::to_string(sectors) + "\n");
    source_->link("/sys/class/block/" + name, "../.." + folder.substr(4));
    source_->link("/sys/dev/block/" + dev, "../.." + folder.substr(4));
}

SysfsBlockTree& SysfsBlockTree::attribute(const std::string& name, const std::string& relative,
                                          const std::string& text) {
    source_->file(folderOf(name) + "/" + relative, text);
    return *this;
}

SysfsBlockTree& SysfsBlockTree::holder(const std::string& name, const std::string& holderName) {
    source_->link(folderOf(name) + "/holders/" + holderName, "../../" + holderName);
    return *this;
}

SysfsBlockTree& SysfsBlockTree::udev(const std::string& dev, const std::string& record) {
    source_->file("/run/udev/data/b" + dev, record);
    return *this;
}

SysfsBlockTree& SysfsBlockTree::mountTable(const std::string& text) {
    source_->file("/proc/self/mountinfo", text);
    return *this;
}

SysfsBlockTree& SysfsBlockTree::freeSpace(const std::string& mountPoint, std::uint64_t blockSize,
                                          std::uint64_t availableBlocks) {
    DictionaryRef statistics = makeDictionary();
    statistics->set("blockSize", blockSize);
    statistics->set("totalBlocks", availableBlocks * 2);
    statistics->set("freeBlocks", availableBlocks + 10);
    statistics->set("availableBlocks", availableBlocks);
    source_->fact("statvfs", mountPoint, Value(statistics));
    return *this;
}

std::string SysfsBlockTree::folderOf(const std::string& name) const {
    const auto found = folders_.find(name);
    return found == folders_.end() ? "/sys/devices/unknown/" + name : found->second;
}

}  // namespace tov::testing
