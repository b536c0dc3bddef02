#include "discovery/PublicIpLookupUrl.h"

#ifndef TOV_PUBLIC_IP_URL
#define TOV_PUBLIC_IP_URL ""
#endif

namespace tov {

const char* publicIpLookupUrl() { return TOV_PUBLIC_IP_URL; }

}  // namespace tov
