#pragma once

// The "events" section: the machine's local IPv4 address and its public address as the
// lookup page sees it, as { "Network": one QVIPInfo record }. The last known pair is kept
// in the settings, so the public address is looked up again only when the local one
// changed, and a failed lookup falls back on the saved public address. The same rules
// serve both platforms; only the interface name prefixes differ. Whether to look the
// public address up again is PublicIpRule.h's rule, shared with the report manager.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SystemSource.h"
#include "model/QVIPInfo.h"

namespace tov {

class QVIPInfoDiscoverer : public QVSystemInfoDiscoverer {
public:
    static constexpr const char* kNetworkKey = "Network";

    struct Options {
        // Interfaces whose name starts with one of these carry the local address.
        std::vector<std::string> interfacePrefixes;
        // The public-IP lookup page; "" for no lookup at all.
        std::string publicIpUrl;
        // False: the saved pair is neither read nor written (both count as absent).
        bool persistAddresses = true;
    };

    QVIPInfoDiscoverer(std::shared_ptr<SystemSource> source, Options options);

    std::string sourceName() const override { return "events"; }
    DictionaryRef discoverInfo() override;

    // The record of this scan; updates the saved pair when an address was learnt.
    std::shared_ptr<QVIPInfo> discoverIP();

    // The IPv4 address of the first interface, in plain string order of names, whose name
    // starts with one of the prefixes; "" when there is none.
    static std::string localIP(SystemSource& source, const std::vector<std::string>& interfacePrefixes);
    // The address the lookup page at url reports; "" without a url, when the page cannot
    // be reached, when the fetch fails or when the page holds no address.
    static std::string publicIP(SystemSource& source, const std::string& url);
    // The address hidden in the page as a number inside an HTML comment ("<!--16820416-->"
    // gives "192.168.0.1": the lowest byte comes first); nothing when there is none.
    static std::optional<std::string> ipAddressFromHtmlContents(std::string_view contents);

private:
    std::shared_ptr<SystemSource> source_;
    Options options_;
};

}  // namespace tov
