#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVHardware.h"

namespace tov {

// A keyboard, named and told apart by its name.
class QVIOKitKeyboard : public QVRecordKind<QVIOKitKeyboard, QVHardware> {
public:
    static constexpr const char* kClassName = "QVIOKitKeyboard";

    static std::shared_ptr<QVIOKitKeyboard> ioKitKeyboard();

    std::optional<std::string> name() const;
    void setName(std::optional<std::string_view> name);

    std::optional<std::string> identifier() const override { return name(); }
    bool isEqual(const QVSystemInfo& other) const override;
};

}  // namespace tov
