#include "UI/Pictures/ApplicationPictures.h"

#import <AppKit/AppKit.h>

namespace korvell {

Pictures::MakeLoad applicationPictures(const UserFolders&, const Environment&) {
  return []() -> Pictures::Load {
    return [](const std::string& bundle, int pixels) -> QImage {
      @autoreleasepool {
        NSString* path = [NSFileManager.defaultManager stringWithFileSystemRepresentation:bundle.c_str()
                                                                                   length:bundle.size()];
        NSImage* icon = path ? [NSWorkspace.sharedWorkspace iconForFile:path] : nil;
        if (!icon) return {};
        NSRect box = NSMakeRect(0, 0, pixels, pixels);
        CGImageRef picture = [icon CGImageForProposedRect:&box context:nil hints:nil];
        if (!picture) return {};
        QImage drawn(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
        drawn.fill(Qt::transparent);
        CGColorSpaceRef colors = CGColorSpaceCreateWithName(kCGColorSpaceSRGB);
        CGContextRef context = CGBitmapContextCreate(
            drawn.bits(), std::size_t(pixels), std::size_t(pixels), 8, std::size_t(drawn.bytesPerLine()),
            colors, uint32_t(kCGImageAlphaPremultipliedFirst) | uint32_t(kCGBitmapByteOrder32Little));
        if (context) CGContextDrawImage(context, CGRectMake(0, 0, pixels, pixels), picture);
        CGContextRelease(context);
        CGColorSpaceRelease(colors);
        return context ? drawn : QImage();
      }
    };
  };
}

} // namespace korvell
