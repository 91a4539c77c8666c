#include "UI/Shell/FileManager.h"

#import <AppKit/AppKit.h>

namespace korvell {

void showInFileManager(const std::string& path) {
  NSURL* url = [NSURL fileURLWithFileSystemRepresentation:path.c_str() isDirectory:NO relativeToURL:nil];
  [NSWorkspace.sharedWorkspace activateFileViewerSelectingURLs:@[ url ]];
}

} // namespace korvell
