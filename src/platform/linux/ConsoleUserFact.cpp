#include <systemd/sd-login.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <optional>

#include "common/QVSLogger.h"
#include "common/UserDatabase.h"
#include "platform/linux/LinuxFacts.h"

namespace tov {
namespace {

bool seatExists(const std::string& seat) {
    char** seats = nullptr;
    const int count = sd_get_seats(&seats);
    bool found = false;
    for (int index = 0; index < count; ++index) {
        found = found || seat == seats[index];
        std::free(seats[index]);
    }
    std::free(seats);
    return found;
}

std::string userName(uid_t uid) {
    const std::optional<std::string> name = userNameOfId(uid);
    if (!name) QVSLogger::debug("The console user %u has no name in the user database.", static_cast<unsigned>(uid));
    return name.value_or("");
}

// The user of the seat's active session; "" when nobody is logged in there.
std::string activeUser(const std::string& seat) {
    char* session = nullptr;
    uid_t uid = 0;
    const int result = sd_seat_get_active(seat.c_str(), &session, &uid);
    std::free(session);
    if (result < 0) {
        QVSLogger::debug("The seat %s has no active session: %s", seat.c_str(), std::strerror(-result));
        return "";
    }
    return userName(uid);
}

}  // namespace

Value consoleUserFact(const std::string& seat) {
    DictionaryRef fact = makeDictionary();
    const bool exists = !seat.empty() && seatExists(seat);
    fact->set("seat", exists);
    fact->set("user", exists ? activeUser(seat) : std::string());
    return fact;
}

}  // namespace tov
