#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "discovery/SystemFacts.h"
#include "platform/NativeFacts.h"
#include "support/ChildProcess.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::TestFolder;
using testing::writeFile;

constexpr const char* kCupsDaemon = "/usr/sbin/cupsd";

constexpr const char* kLaserPpd = R"ppd(*PPD-Adobe: "4.3"
*FormatVersion: "4.3"
*FileVersion: "1.0"
*LanguageVersion: English
*LanguageEncoding: ISOLatin1
*PCFileName: "LASER.PPD"
*Manufacturer: "Acme"
*Product: "(Acme Laser 900)"
*ModelName: "Acme Laser 900"
*ShortNickName: "Acme Laser 900"
*NickName: "Acme Laser 900 Postscript"
*PSVersion: "(3010.000) 0"
*LanguageLevel: "3"
*ColorDevice: False
*DefaultColorSpace: Gray
*FileSystem: False
*Throughput: "1"
*LandscapeOrientation: Plus90
*TTRasterizer: Type42
*OpenUI *PageSize: PickOne
*DefaultPageSize: A4
*PageSize A4/A4: "<</PageSize[595 842]>>setpagedevice"
*CloseUI: *PageSize
*DefaultImageableArea: A4
*ImageableArea A4/A4: "0 0 595 842"
*DefaultPaperDimension: A4
*PaperDimension A4/A4: "595 842"
)ppd";

// A real CUPS scheduler of its own, listening on a socket in a test folder, with two
// queues: one with a PPD (a make and model) and one raw queue (none of its own).
class PrivateCupsServer {
public:
    explicit PrivateCupsServer(const TestFolder& folder) : socket_(folder.file("cups.sock")) {
        const std::string root = folder.path();
        writeFile(root + "/conf/cupsd.conf", "Listen " + socket_ + "\nLogLevel warn\n<Location />\nOrder allow,deny\nAllow all\n</Location>\n");
        writeFile(root + "/conf/cups-files.conf",
                  "ServerRoot " + root + "/conf\nRequestRoot " + root + "/spool\nCacheDir " + root +
                      "/cache\nStateDir " + root + "/state\nErrorLog " + root + "/error_log\nAccessLog " + root +
                      "/access_log\nPageLog " + root + "/page_log\nFileDevice Yes\n");
        writeFile(root + "/conf/printers.conf",
                  "<Printer Office_Laser>\nInfo Office\nDeviceURI file:///dev/null\nState Idle\nAccepting Yes\n"
                  "</Printer>\n<Printer Label_Raw>\nDeviceURI file:///dev/null\nState Idle\nAccepting Yes\n"
                  "</Printer>\n");
        writeFile(root + "/conf/ppd/Office_Laser.ppd", kLaserPpd);
        for (const char* folderName : {"/spool", "/cache", "/state"}) mkdir((root + folderName).c_str(), 0700);
        chmod((root + "/conf/printers.conf").c_str(), 0600);
        chmod((root + "/conf/ppd/Office_Laser.ppd").c_str(), 0644);
        daemon_ = fork();
        if (daemon_ == 0) {
            execl(kCupsDaemon, kCupsDaemon, "-f", "-c", (root + "/conf/cupsd.conf").c_str(), "-s",
                  (root + "/conf/cups-files.conf").c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        for (int attempt = 0; attempt < 100 && !listening(); ++attempt) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    }
    ~PrivateCupsServer() {
        if (daemon_ <= 0) return;
        kill(daemon_, SIGTERM);
        waitpid(daemon_, nullptr, 0);
    }
    bool listening() const {
        struct stat status {};
        return lstat(socket_.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
    }
    const std::string& socket() const { return socket_; }

private:
    std::string socket_;
    pid_t daemon_ = -1;
};

// The printers fact as a client of that server sees it (the client library finds its
// server through CUPS_SERVER, set only in a child process).
std::string printersSeenThrough(const std::string& server) {
    return testing::runInChild([&server] {
               setenv("CUPS_SERVER", server.c_str(), 1);
               const Value printers = nativeFact(facts::kPrinters, "");
               if (!printers.isArray()) return 1;
               for (const Value& printer : *printers.array()) {
                   const DictionaryRef entry = printer.dictionary();
                   std::printf("%s|%s\n", entry->get("name").string()->c_str(),
                               entry->get("makeAndModel").string()->c_str());
               }
               std::fflush(stdout);
               return 0;
           })
        .output;
}

TEST(CupsPrintersFact, ListsTheQueuesOfARealSchedulerWithTheirMakeAndModel) {
    if (!testing::runningAsRoot() || access(kCupsDaemon, X_OK) != 0) GTEST_SKIP() << "needs root and cupsd";
    const TestFolder folder;
    const PrivateCupsServer server(folder);
    ASSERT_TRUE(server.listening()) << testing::readFile(folder.file("error_log"));
    const std::string seen = printersSeenThrough(server.socket());
    EXPECT_NE(seen.find("Office_Laser|Acme Laser 900 Postscript\n"), std::string::npos) << seen;
    EXPECT_NE(seen.find("Label_Raw|"), std::string::npos) << seen;
}

TEST(CupsPrintersFact, NoSchedulerGivesNoPrinters) {
    const TestFolder folder;
    EXPECT_EQ(printersSeenThrough(folder.file("no-server.sock")), "");
}

}  // namespace
}  // namespace tov
