#pragma once
// The one question that the helper answers. Objective-C++ only.

#import <Foundation/Foundation.h>

@protocol RusageHelperProtocol
/// The reply holds RusageSample records of those processes that could be read.
- (void)rusageForPIDs:(NSArray<NSNumber*>*)pids reply:(void (^)(NSData*))reply;
@end
