#include "Platform/macOS/MacTrash.h"

#include "Base/Localization.h"
#include "Base/macOS/CoreFoundation.h"
#include "Platform/macOS/MacFileTree.h"

#import <AppKit/AppKit.h>

#include <memory>

namespace korvell {

namespace {

/// The system may ask for an administrator's password meanwhile.
constexpr int64_t patience = 300 * int64_t(NSEC_PER_SEC);

/// What the workspace tells. Shared with its handler, which may come after nobody waits any more.
struct Recycled {
  NSDictionary<NSURL*, NSURL*>* moved = nil;
  NSString* reason = nil;
};

/// Why a request can't be met, as far as a look at the path tells.
std::optional<Failure> refusal(const TrashRequest& request, MacFileTree& tree) {
  const auto mounts = tree.mounts();
  if (const auto* mount = mountInside(request.path, mounts)) return Failure{korvell::refusal(*mount)};
  const auto info = tree.info(request.path);
  if (!info) return Failure{localized("It is no longer there.")};
  if (request.picked && (info->identity != *request.picked || tree.located(request.path) != request.path))
    return Failure{localized("It is no longer there.")};
  return std::nullopt;
}

NSURL* fileURL(const std::string& path, MacFileTree& tree) {
  const auto info = tree.info(path);
  return [NSURL fileURLWithFileSystemRepresentation:path.c_str()
                                        isDirectory:info && info->kind == FileKind::folder
                                      relativeToURL:nil];
}

/// Waits for the workspace, which answers on the queue on which it was asked. Nothing when it takes too long.
std::optional<Recycled> recycle(NSArray<NSURL*>* urls) {
  const auto result = std::make_shared<Recycled>();
  dispatch_semaphore_t done = dispatch_semaphore_create(0);
  dispatch_async(dispatch_queue_create("Korvell.trash", DISPATCH_QUEUE_SERIAL), ^{
    [NSWorkspace.sharedWorkspace recycleURLs:urls
                           completionHandler:^(NSDictionary<NSURL*, NSURL*>* moved, NSError* error) {
                             result->moved = moved;
                             result->reason = error.localizedDescription;
                             dispatch_semaphore_signal(done);
                           }];
  });
  if (dispatch_semaphore_wait(done, dispatch_time(DISPATCH_TIME_NOW, patience)) != 0) return std::nullopt;
  return *result;
}

/// After the workspace was asked.
Outcome outcome(const TrashRequest& request, NSURL* url, const std::optional<Recycled>& recycled,
                MacFileTree& tree) {
  if (recycled && recycled->moved[url]) return success();
  if (!recycled && !tree.info(request.path)) return success();
  if (recycled && recycled->reason) return Failure{cfText((__bridge CFStringRef)recycled->reason)};
  return Failure{localized("It could not be moved.")};
}

} // namespace

std::vector<Outcome> MacTrash::move(const std::vector<TrashRequest>& requests) {
  @autoreleasepool {
    MacFileTree tree;
    std::vector<Outcome> outcomes;
    NSMutableArray<NSURL*>* urls = [NSMutableArray array];
    std::vector<size_t> asked; // the request of each URL
    for (const auto& request : requests) {
      if (const auto refused = refusal(request, tree)) {
        outcomes.push_back(*refused);
        continue;
      }
      asked.push_back(outcomes.size());
      [urls addObject:fileURL(request.path, tree)];
      outcomes.push_back(success());
    }
    if (asked.empty()) return outcomes;
    const auto recycled = recycle(urls);
    for (size_t i = 0; i < asked.size(); ++i)
      outcomes[asked[i]] = outcome(requests[asked[i]], urls[i], recycled, tree);
    return outcomes;
  }
}

std::vector<TrashFolder> MacTrash::folders() {
  const auto path = home_ + "/.Trash";
  const auto info = MacFileTree().info(path);
  if (!info || info->kind != FileKind::folder) return {};
  return {{.entries = path, .records = {}, .recordSuffix = {}}};
}

} // namespace korvell
