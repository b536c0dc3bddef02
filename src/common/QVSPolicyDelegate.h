#pragma once

// What the policy tells its delegate once a changed policy file has been taken over.

namespace tov {

class QVSPolicy;

class QVSPolicyDelegate {
public:
    virtual ~QVSPolicyDelegate() = default;
    virtual void didPolicyChanged(QVSPolicy& policy) = 0;
};

}  // namespace tov
