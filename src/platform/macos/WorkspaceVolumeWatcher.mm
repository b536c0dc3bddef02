// The macOS volume watcher: the workspace's mount and unmount notifications, each with the
// volume's mount path and localized name, handed to the run loop's thread. Objective-C++
// under ARC, since NSWorkspace has no C interface.

#include "platform/VolumeWatcher.h"

#import <AppKit/AppKit.h>

#include <memory>
#include <string>
#include <utility>

#include "common/QVSLogger.h"

namespace tov {
namespace {

// The mount path as text: what the unmount notification is documented to carry, and what
// systems without the URL key give; NSWorkspaceVolumeURLKey is read first.
NSString* const kDevicePathKey = @"NSDevicePath";

std::string textOf(NSString* text) {
    const char* bytes = text.UTF8String;
    return bytes != nullptr ? std::string(bytes) : std::string();
}

std::string mountPathOf(NSDictionary* information) {
    id url = information[NSWorkspaceVolumeURLKey];
    if ([url isKindOfClass:[NSURL class]] && [(NSURL*)url isFileURL]) {
        const char* path = [(NSURL*)url fileSystemRepresentation];
        if (path != nullptr) return std::string(path);
    }
    id path = information[kDevicePathKey];
    return [path isKindOfClass:[NSString class]] ? textOf((NSString*)path) : std::string();
}

std::string volumeNameOf(NSDictionary* information) {
    id name = information[NSWorkspaceVolumeLocalizedNameKey];
    return [name isKindOfClass:[NSString class]] ? textOf((NSString*)name) : std::string();
}

VolumeEvent volumeEventOf(NSNotification* notification, VolumeEvent::Kind kind) {
    id information = notification.userInfo;
    NSDictionary* dictionary = [information isKindOfClass:[NSDictionary class]] ? (NSDictionary*)information : nil;
    VolumeEvent event;
    event.kind = kind;
    event.mountPath = mountPathOf(dictionary);
    event.volumeName = volumeNameOf(dictionary);
    return event;
}

class WorkspaceVolumeWatcher final : public VolumeWatcher {
public:
    WorkspaceVolumeWatcher(RunLoop& loop, Handler handler)
        : relay_(std::make_shared<Relay>(Relay{loop, std::move(handler), true})) {}

    // Events already posted find the watcher gone and are dropped.
    ~WorkspaceVolumeWatcher() override {
        relay_->alive = false;
        NSNotificationCenter* center = NSWorkspace.sharedWorkspace.notificationCenter;
        if (mountObserver_ != nil) [center removeObserver:mountObserver_];
        if (unmountObserver_ != nil) [center removeObserver:unmountObserver_];
    }

    bool start() {
        @autoreleasepool {
            mountObserver_ = observe(NSWorkspaceDidMountNotification, VolumeEvent::Kind::Mounted);
            unmountObserver_ = observe(NSWorkspaceDidUnmountNotification, VolumeEvent::Kind::Unmounted);
        }
        if (mountObserver_ != nil && unmountObserver_ != nil) return true;
        QVSLogger::error("The workspace's volume notifications cannot be observed.");
        return false;
    }

private:
    // What the notification blocks share with the loop thread; alive is read and cleared
    // on the loop thread only.
    struct Relay {
        RunLoop& loop;
        Handler handler;
        bool alive;
    };

    // The workspace posts on the main thread; the block runs there (no queue given) and
    // posts the event to the loop, whatever thread that is.
    id<NSObject> observe(NSNotificationName name, VolumeEvent::Kind kind) {
        const std::shared_ptr<Relay> relay = relay_;
        NSNotificationCenter* center = NSWorkspace.sharedWorkspace.notificationCenter;
        return [center addObserverForName:name
                                   object:nil
                                    queue:nil
                               usingBlock:^(NSNotification* notification) {
                                 @autoreleasepool {
                                     const VolumeEvent event = volumeEventOf(notification, kind);
                                     if (event.mountPath.empty()) {
                                         QVSLogger::debug("A volume notification without a mount path is ignored.");
                                     } else {
                                         relay->loop.post([relay, event] {
                                             if (relay->alive) relay->handler(event);
                                         });
                                     }
                                 }
                               }];
    }

    std::shared_ptr<Relay> relay_;
    id<NSObject> mountObserver_ = nil;
    id<NSObject> unmountObserver_ = nil;
};

}  // namespace

std::unique_ptr<VolumeWatcher> VolumeWatcher::create(RunLoop& loop, Handler handler) {
    auto watcher = std::make_unique<WorkspaceVolumeWatcher>(loop, std::move(handler));
    if (!watcher->start()) return nullptr;
    return watcher;
}

}  // namespace tov
