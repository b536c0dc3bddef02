#pragma once

#include "model/QVSystemInfo.h"

namespace tov {

// Marks the kinds that describe a piece of hardware; it adds nothing of its own.
class QVHardware : public QVSystemInfo {
public:
    static constexpr const char* kClassName = "QVHardware";

    const char* className() const override { return kClassName; }
    bool isKindOf(const std::type_info& type) const override {
        return type == typeid(QVHardware) || QVSystemInfo::isKindOf(type);
    }

protected:
    std::shared_ptr<QVSystemInfo> makeEmpty() const override { return std::make_shared<QVHardware>(); }
};

}  // namespace tov
