#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVHardware.h"

namespace tov {

// A video camera. Cameras are told apart by their unique id alone; the identifier is the
// base's empty one.
class QVIOKitCamera : public QVRecordKind<QVIOKitCamera, QVHardware> {
public:
    static constexpr const char* kClassName = "QVIOKitCamera";

    static std::shared_ptr<QVIOKitCamera> ioKitCamera();

    std::optional<std::string> name() const;
    void setName(std::optional<std::string_view> name);
    std::optional<std::string> model() const;
    void setModel(std::optional<std::string_view> model);
    std::optional<std::string> uuid() const;
    void setUuid(std::optional<std::string_view> uuid);

    // Both must carry the same non-empty unique id.
    bool isEqual(const QVSystemInfo& other) const override;
};

}  // namespace tov
