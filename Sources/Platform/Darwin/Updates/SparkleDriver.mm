#import "Platform/Darwin/Updates/SparkleDriver.h"

#include <memory>
#include <utility>

namespace vantoro {

static_assert(SparkleCode::insufficientSigning == SUInsufficientSigningError);
static_assert(SparkleCode::appcastParse == SUAppcastParseError);
static_assert(SparkleCode::noUpdate == SUNoUpdateError);
static_assert(SparkleCode::appcast == SUAppcastError);
static_assert(SparkleCode::runningFromDiskImage == SURunningFromDiskImageError);
static_assert(SparkleCode::runningTranslocated == SURunningTranslocated);
static_assert(SparkleCode::download == SUDownloadError);
static_assert(SparkleCode::unarchiving == SUUnarchivingError);
static_assert(SparkleCode::signature == SUSignatureError);
static_assert(SparkleCode::validation == SUValidationError);
static_assert(SparkleCode::fileCopyFailure == SUFileCopyFailure);
static_assert(SparkleCode::authenticationFailure == SUAuthenticationFailure);
static_assert(SparkleCode::relaunch == SURelaunchError);
static_assert(SparkleCode::installationCanceled == SUInstallationCanceledError);
static_assert(SparkleCode::installationAuthorizeLater == SUInstallationAuthorizeLaterError);
static_assert(SparkleCode::installationWriteNoPermission == SUInstallationWriteNoPermissionError);
static_assert(reasonSystemIsTooOld == SPUNoUpdateFoundReasonSystemIsTooOld);

std::string textOf(NSString* text) {
    const char* const bytes = [text UTF8String];
    return bytes != nullptr ? bytes : "";
}

NSString* textFor(const std::string& text) {
    NSString* const converted = [NSString stringWithUTF8String:text.c_str()];
    return converted != nil ? converted : @"";
}

namespace {

AppcastItem appcastItemOf(SUAppcastItem* item) {
    NSString* const notes = [item itemDescription];
    return {.versionString = textOf([item versionString]),
            .displayVersionString = textOf([item displayVersionString]),
            .itemDescription = notes != nil ? std::optional(textOf(notes)) : std::nullopt,
            .contentLength = [item contentLength],
            .isInformationOnlyUpdate = static_cast<bool>([item isInformationOnlyUpdate])};
}

std::string domainOf(NSError* error) {
    if ([[error domain] isEqualToString:SUSparkleErrorDomain])
        return std::string(sparkleErrorDomain);
    if ([[error domain] isEqualToString:NSURLErrorDomain])
        return std::string(urlErrorDomain);
    return textOf([error domain]);
}

/// Notes from elsewhere are in any encoding; every sequence of bytes is text in Latin-1.
std::string notesOf(NSData* data) {
    NSString* notes = [[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding];
    if (notes == nil)
        notes = [[NSString alloc] initWithData:data encoding:NSISOLatin1StringEncoding];
    const std::string text = textOf(notes);
    [notes release];
    return text;
}

UserUpdateState userUpdateStateOf(SPUUserUpdateState* state) {
    using Stage = UserUpdateState::Stage;
    Stage stage = Stage::notDownloaded;
    if ([state stage] == SPUUserUpdateStageDownloaded)
        stage = Stage::downloaded;
    else if ([state stage] == SPUUserUpdateStageInstalling)
        stage = Stage::installing;
    return {.stage = stage, .userInitiated = static_cast<bool>([state userInitiated])};
}

UpdateCheck updateCheckOf(SPUUpdateCheck check) {
    switch (check) {
    case SPUUpdateCheckUpdates:
        return UpdateCheck::byUser;
    case SPUUpdateCheckUpdatesInBackground:
        return UpdateCheck::inBackground;
    case SPUUpdateCheckUpdateInformation:
        break;
    }
    return UpdateCheck::information;
}

SPUUserUpdateChoice userUpdateChoiceFor(UpdateChoice choice) {
    switch (choice) {
    case UpdateChoice::skip:
        return SPUUserUpdateChoiceSkip;
    case UpdateChoice::install:
        return SPUUserUpdateChoiceInstall;
    case UpdateChoice::dismiss:
        break;
    }
    return SPUUserUpdateChoiceDismiss;
}

/// A block that waits to be called. Sparkle's lie on its stack, so that it is a copy that is kept.
class KeptBlock {
public:
    explicit KeptBlock(id block) : block_([block copy]) {}
    ~KeptBlock() { [block_ release]; }

    KeptBlock(const KeptBlock&) = delete;
    KeptBlock& operator=(const KeptBlock&) = delete;

    /// Nil from the second time on.
    id take() { return [std::exchange(block_, nil) autorelease]; }

private:
    id block_;
};

/// Calls the block at most once, and not when the session that it belongs to is over.
template <class... Arguments>
std::function<void(Arguments...)> onceOf(void (^block)(Arguments...), std::weak_ptr<const void> session) {
    return [kept = std::make_shared<KeptBlock>(block), session = std::move(session)](Arguments... arguments) {
        @autoreleasepool {
            void (^const taken)(Arguments...) = session.expired() ? nil : kept->take();
            if (taken != nil)
                taken(arguments...);
        }
    };
}

UpdateReply replyOf(void (^reply)(SPUUserUpdateChoice), std::weak_ptr<const void> session) {
    return [answer = onceOf(reply, std::move(session))](UpdateChoice choice) { answer(userUpdateChoiceFor(choice)); };
}

} // namespace

UpdateError updateErrorOf(NSError* error) {
    id const item = [[error userInfo] objectForKey:SPULatestAppcastItemFoundKey];
    id const reason = [[error userInfo] objectForKey:SPUNoUpdateFoundReasonKey];
    UpdateError result{.domain = domainOf(error),
                       .code = static_cast<int>([error code]),
                       .description = textOf([error localizedDescription]),
                       .latestItem = std::nullopt,
                       .noUpdateReason = std::nullopt};
    if ([item isKindOfClass:[SUAppcastItem class]])
        result.latestItem = appcastItemOf(item);
    if ([reason isKindOfClass:[NSNumber class]])
        result.noUpdateReason = [reason intValue];
    return result;
}

} // namespace vantoro

using namespace vantoro;

@implementation VantoroSparkleDriver {
    UpdateDriver* _driver;
    /// What answers ask whether they still have somebody to reach.
    std::shared_ptr<const void> _session;
}

- (instancetype)initWithDriver:(UpdateDriver&)driver {
    self = [super init];
    if (self != nil) {
        _driver = &driver;
        _session = std::make_shared<int>();
    }
    return self;
}

- (void)leave {
    _driver = nullptr;
    _session = nullptr;
    [self setUpdater:nil];
}

// The user driver.

- (void)showUpdatePermissionRequest:(SPUUpdatePermissionRequest*)__unused request
                              reply:(void (^)(SUUpdatePermissionResponse*))reply {
    // The bundle has settled it, and the settings can change it: there is nothing to ask.
    const BOOL automatic = [[self updater] automaticallyChecksForUpdates];
    SUUpdatePermissionResponse* const response =
        [[SUUpdatePermissionResponse alloc] initWithAutomaticUpdateChecks:automatic sendSystemProfile:NO];
    reply(response);
    [response release];
}

- (void)showUserInitiatedUpdateCheckWithCancellation:(void (^)(void))cancellation {
    if (_driver != nullptr)
        _driver->showUserInitiatedUpdateCheck(onceOf(cancellation, _session));
}

- (void)showUpdateFoundWithAppcastItem:(SUAppcastItem*)appcastItem
                                 state:(SPUUserUpdateState*)state
                                 reply:(void (^)(SPUUserUpdateChoice))reply {
    if (_driver != nullptr)
        _driver->showUpdateFound(appcastItemOf(appcastItem), userUpdateStateOf(state), replyOf(reply, _session));
}

- (void)showUpdateReleaseNotesWithDownloadData:(SPUDownloadData*)downloadData {
    if (_driver != nullptr)
        _driver->showUpdateReleaseNotes(notesOf([downloadData data]));
}

- (void)showUpdateReleaseNotesFailedToDownloadWithError:(NSError*)__unused error {
    // An update can be had without its notes.
}

- (void)showUpdateNotFoundWithError:(NSError*)error acknowledgement:(void (^)(void))acknowledgement {
    if (_driver != nullptr)
        _driver->showUpdateNotFoundWithError(updateErrorOf(error), onceOf(acknowledgement, _session));
}

- (void)showUpdaterError:(NSError*)error acknowledgement:(void (^)(void))acknowledgement {
    if (_driver != nullptr)
        _driver->showUpdaterError(updateErrorOf(error), onceOf(acknowledgement, _session));
}

- (void)showDownloadInitiatedWithCancellation:(void (^)(void))cancellation {
    if (_driver != nullptr)
        _driver->showDownloadInitiated(onceOf(cancellation, _session));
}

- (void)showDownloadDidReceiveExpectedContentLength:(uint64_t)expectedContentLength {
    if (_driver != nullptr)
        _driver->showDownloadDidReceiveExpectedContentLength(expectedContentLength);
}

- (void)showDownloadDidReceiveDataOfLength:(uint64_t)length {
    if (_driver != nullptr)
        _driver->showDownloadDidReceiveData(length);
}

- (void)showDownloadDidStartExtractingUpdate {
    if (_driver != nullptr)
        _driver->showDownloadDidStartExtractingUpdate();
}

- (void)showExtractionReceivedProgress:(double)progress {
    if (_driver != nullptr)
        _driver->showExtractionReceivedProgress(progress);
}

- (void)showReadyToInstallAndRelaunch:(void (^)(SPUUserUpdateChoice))reply {
    if (_driver != nullptr)
        _driver->showReadyToInstallAndRelaunch(replyOf(reply, _session));
}

- (void)showInstallingUpdateWithApplicationTerminated:(BOOL)applicationTerminated
                          retryTerminatingApplication:(void (^)(void))retryTerminatingApplication {
    if (_driver != nullptr)
        _driver->showInstallingUpdate(applicationTerminated, onceOf(retryTerminatingApplication, _session));
}

- (void)showUpdateInstalledAndRelaunched:(BOOL)relaunched acknowledgement:(void (^)(void))acknowledgement {
    if (_driver != nullptr)
        _driver->showUpdateInstalledAndRelaunched(relaunched, onceOf(acknowledgement, _session));
}

- (void)showUpdateInFocus {
    // An update has no window of its own that could come forward.
}

- (void)dismissUpdateInstallation {
    if (_driver != nullptr)
        _driver->dismissUpdateInstallation();
}

// The updater's delegate.

- (BOOL)updater:(SPUUpdater*)__unused updater
    mayPerformUpdateCheck:(SPUUpdateCheck)updateCheck
                    error:(NSError* __autoreleasing*)error {
    if (updateCheck == SPUUpdateCheckUpdates || [self allowsUnbiddenChecks])
        return YES;
    _refusedCheck = YES;
    if (error != nullptr)
        *error = [NSError errorWithDomain:NSCocoaErrorDomain code:NSUserCancelledError userInfo:nil];
    return NO;
}

- (BOOL)updaterShouldPromptForPermissionToCheckForUpdates:(SPUUpdater*)__unused updater {
    return NO;
}

- (NSArray<NSDictionary<NSString*, NSString*>*>*)feedParametersForUpdater:(SPUUpdater*)__unused updater
                                                     sendingSystemProfile:(BOOL)__unused sendingProfile {
    return [NSArray array];
}

- (void)updaterDidNotFindUpdate:(SPUUpdater*)__unused updater error:(NSError*)error {
    if (_driver != nullptr)
        _driver->updaterDidNotFindUpdate(updateErrorOf(error));
}

- (void)updater:(SPUUpdater*)__unused updater
    didFinishUpdateCycleForUpdateCheck:(SPUUpdateCheck)updateCheck
                                 error:(NSError*)error {
    if (_driver != nullptr)
        _driver->didFinishUpdateCycleFor(updateCheckOf(updateCheck),
                                         error != nil ? updateErrorOf(error) : Outcome<UpdateError>());
}

@end
