// What this project uses of Sparkle 2, declared so that it compiles where the framework is not. The delegate's methods
// are optional in truth; they are required here, so that one that is misspelt does not go unnoticed.
#pragma once

#import <Foundation/Foundation.h>

@class SPUUpdater;

extern NSString* const SUSparkleErrorDomain;
extern NSString* const SPUNoUpdateFoundReasonKey;
extern NSString* const SPULatestAppcastItemFoundKey;

typedef enum SUError : int {
    SUInsufficientSigningError = 2,
    SUAppcastParseError = 1000,
    SUNoUpdateError = 1001,
    SUAppcastError = 1002,
    SURunningFromDiskImageError = 1003,
    SURunningTranslocated = 1005,
    SUDownloadError = 2001,
    SUUnarchivingError = 3000,
    SUSignatureError = 3001,
    SUValidationError = 3002,
    SUFileCopyFailure = 4000,
    SUAuthenticationFailure = 4001,
    SURelaunchError = 4004,
    SUInstallationCanceledError = 4007,
    SUInstallationAuthorizeLaterError = 4008,
    SUInstallationWriteNoPermissionError = 4012
} SUError;

typedef enum SPUNoUpdateFoundReason : int {
    SPUNoUpdateFoundReasonUnknown,
    SPUNoUpdateFoundReasonOnLatestVersion,
    SPUNoUpdateFoundReasonOnNewerThanLatestVersion,
    SPUNoUpdateFoundReasonSystemIsTooOld,
    SPUNoUpdateFoundReasonSystemIsTooNew
} SPUNoUpdateFoundReason;

typedef enum SPUUserUpdateChoice : NSInteger {
    SPUUserUpdateChoiceSkip,
    SPUUserUpdateChoiceInstall,
    SPUUserUpdateChoiceDismiss
} SPUUserUpdateChoice;

typedef enum SPUUserUpdateStage : NSInteger {
    SPUUserUpdateStageNotDownloaded,
    SPUUserUpdateStageDownloaded,
    SPUUserUpdateStageInstalling
} SPUUserUpdateStage;

typedef enum SPUUpdateCheck : NSInteger {
    SPUUpdateCheckUpdates,
    SPUUpdateCheckUpdatesInBackground,
    SPUUpdateCheckUpdateInformation
} SPUUpdateCheck;

@interface SUAppcastItem : NSObject
@property(copy, nonatomic, readonly) NSString* versionString;
@property(copy, nonatomic, readonly) NSString* displayVersionString;
@property(copy, nonatomic, readonly) NSString* itemDescription;
@property(nonatomic, readonly) uint64_t contentLength;
@property(getter=isInformationOnlyUpdate, nonatomic, readonly) BOOL informationOnlyUpdate;
@end

@interface SPUUserUpdateState : NSObject
@property(nonatomic, readonly) SPUUserUpdateStage stage;
@property(nonatomic, readonly) BOOL userInitiated;
@end

@interface SPUDownloadData : NSObject
@property(nonatomic, readonly) NSData* data;
@end

@interface SPUUpdatePermissionRequest : NSObject
@end

@interface SUUpdatePermissionResponse : NSObject
- (instancetype)initWithAutomaticUpdateChecks:(BOOL)automaticUpdateChecks sendSystemProfile:(BOOL)sendSystemProfile;
@end

@interface SUStandardVersionComparator : NSObject
@property(class, nonatomic, readonly) SUStandardVersionComparator* defaultComparator;
- (NSComparisonResult)compareVersion:(NSString*)versionA toVersion:(NSString*)versionB;
@end

@protocol SPUUserDriver <NSObject>
- (void)showUpdatePermissionRequest:(SPUUpdatePermissionRequest*)request
                              reply:(void (^)(SUUpdatePermissionResponse*))reply;
- (void)showUserInitiatedUpdateCheckWithCancellation:(void (^)(void))cancellation;
- (void)showUpdateFoundWithAppcastItem:(SUAppcastItem*)appcastItem
                                 state:(SPUUserUpdateState*)state
                                 reply:(void (^)(SPUUserUpdateChoice))reply;
- (void)showUpdateReleaseNotesWithDownloadData:(SPUDownloadData*)downloadData;
- (void)showUpdateReleaseNotesFailedToDownloadWithError:(NSError*)error;
- (void)showUpdateNotFoundWithError:(NSError*)error acknowledgement:(void (^)(void))acknowledgement;
- (void)showUpdaterError:(NSError*)error acknowledgement:(void (^)(void))acknowledgement;
- (void)showDownloadInitiatedWithCancellation:(void (^)(void))cancellation;
- (void)showDownloadDidReceiveExpectedContentLength:(uint64_t)expectedContentLength;
- (void)showDownloadDidReceiveDataOfLength:(uint64_t)length;
- (void)showDownloadDidStartExtractingUpdate;
- (void)showExtractionReceivedProgress:(double)progress;
- (void)showReadyToInstallAndRelaunch:(void (^)(SPUUserUpdateChoice))reply;
- (void)showInstallingUpdateWithApplicationTerminated:(BOOL)applicationTerminated
                          retryTerminatingApplication:(void (^)(void))retryTerminatingApplication;
- (void)showUpdateInstalledAndRelaunched:(BOOL)relaunched acknowledgement:(void (^)(void))acknowledgement;
- (void)showUpdateInFocus;
- (void)dismissUpdateInstallation;
@end

@protocol SPUUpdaterDelegate <NSObject>
- (BOOL)updater:(SPUUpdater*)updater
    mayPerformUpdateCheck:(SPUUpdateCheck)updateCheck
                    error:(NSError* __autoreleasing*)error;
- (BOOL)updaterShouldPromptForPermissionToCheckForUpdates:(SPUUpdater*)updater;
- (NSArray<NSDictionary<NSString*, NSString*>*>*)feedParametersForUpdater:(SPUUpdater*)updater
                                                     sendingSystemProfile:(BOOL)sendingProfile;
- (void)updaterDidNotFindUpdate:(SPUUpdater*)updater error:(NSError*)error;
- (void)updater:(SPUUpdater*)updater
    didFinishUpdateCycleForUpdateCheck:(SPUUpdateCheck)updateCheck
                                 error:(NSError*)error;
@end

@interface SPUUpdater : NSObject
- (instancetype)init __attribute__((unavailable));
- (instancetype)initWithHostBundle:(NSBundle*)hostBundle
                 applicationBundle:(NSBundle*)applicationBundle
                        userDriver:(id<SPUUserDriver>)userDriver
                          delegate:(id<SPUUpdaterDelegate>)delegate;
- (BOOL)startUpdater:(NSError* __autoreleasing*)error;
- (void)checkForUpdates;
- (void)checkForUpdatesInBackground;
- (void)resetUpdateCycle;
@property(nonatomic, readonly) BOOL canCheckForUpdates;
@property(nonatomic) BOOL automaticallyChecksForUpdates;
@property(nonatomic) NSTimeInterval updateCheckInterval;
@property(nonatomic) BOOL sendsSystemProfile;
@property(nonatomic, copy) NSString* userAgentString;
@property(nonatomic, readonly, copy) NSDate* lastUpdateCheckDate;
@end
