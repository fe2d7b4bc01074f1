#include "Platform/Darwin/Updates/DarwinUpdateEngine.h"

#import "Platform/Darwin/Updates/SparkleDriver.h"
#include "Platform/UpdateEngine.h"

#include <cstdlib>
#include <utility>

namespace vantoro {

namespace {

constexpr double secondsBetweenChecks = 86400;
/// Copies that were installed on one day are not to ask in one minute ever after.
constexpr std::uint32_t secondsOfJitter = 3600;

std::optional<std::string> bundleText(NSString* key) {
    id const value = [[NSBundle mainBundle] objectForInfoDictionaryKey:key];
    return [value isKindOfClass:[NSString class]] ? std::optional(textOf(value)) : std::nullopt;
}

} // namespace

/// An updater and the driver that it tells.
class DarwinUpdateEngine::Session {
public:
    explicit Session(UpdateDriver& driver) : driver_([[VantoroSparkleDriver alloc] initWithDriver:driver]) {
        NSBundle* const bundle = [NSBundle mainBundle];
        updater_ = [[SPUUpdater alloc] initWithHostBundle:bundle
                                        applicationBundle:bundle
                                               userDriver:driver_
                                                 delegate:driver_];
        [driver_ setUpdater:updater_];
    }

    ~Session() {
        [driver_ leave];
        [updater_ release];
        [driver_ release];
    }

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    SPUUpdater* updater() const { return updater_; }

    Outcome<UpdateError> start(const std::string& version) {
        [updater_ setUserAgentString:textFor("Vantoro/" + version)];
        [updater_ setSendsSystemProfile:NO];
        NSError* error = nil;
        if ([updater_ startUpdater:&error])
            return {};
        return updateErrorOf(error);
    }

    void allowUnbiddenChecks() {
        [driver_ setAllowsUnbiddenChecks:YES];
        [updater_ setUpdateCheckInterval:secondsBetweenChecks + arc4random_uniform(secondsOfJitter)];
        // The updater may count a check that was refused as made and not ask again before tomorrow.
        if ([driver_ refusedCheck] && [updater_ automaticallyChecksForUpdates] && [updater_ canCheckForUpdates])
            [updater_ checkForUpdatesInBackground];
        else
            [updater_ resetUpdateCycle];
    }

private:
    VantoroSparkleDriver* driver_;
    SPUUpdater* updater_;
};

DarwinUpdateEngine::DarwinUpdateEngine(std::string version, std::string build)
    : version_(std::move(version)), build_(std::move(build)) {}

DarwinUpdateEngine::~DarwinUpdateEngine() = default;

std::optional<std::string> DarwinUpdateEngine::feedAddress() const {
    @autoreleasepool {
        return bundleText(@"SUFeedURL");
    }
}

std::string DarwinUpdateEngine::currentVersion() const {
    @autoreleasepool {
        return bundleText(@"CFBundleShortVersionString").value_or(version_);
    }
}

std::string DarwinUpdateEngine::currentBuild() const {
    @autoreleasepool {
        return bundleText(@"CFBundleVersion").value_or(build_);
    }
}

int DarwinUpdateEngine::compareVersion(const std::string& version, const std::string& other) const {
    @autoreleasepool {
        return static_cast<int>([[SUStandardVersionComparator defaultComparator] compareVersion:textFor(version)
                                                                                      toVersion:textFor(other)]);
    }
}

Outcome<UpdateError> DarwinUpdateEngine::startUpdater(UpdateDriver& driver) {
    @autoreleasepool {
        auto session = std::make_unique<Session>(driver);
        if (auto started = session->start(currentVersion()); started.failed())
            return started;
        session_ = std::move(session);
        if (windowWasSeen_)
            session_->allowUnbiddenChecks();
        return {};
    }
}

bool DarwinUpdateEngine::canCheckForUpdates() const {
    return session_ && [session_->updater() canCheckForUpdates];
}

void DarwinUpdateEngine::checkForUpdates() {
    @autoreleasepool {
        if (session_)
            [session_->updater() checkForUpdates];
    }
}

void DarwinUpdateEngine::checkForUpdatesInBackground() {
    @autoreleasepool {
        if (session_)
            [session_->updater() checkForUpdatesInBackground];
    }
}

bool DarwinUpdateEngine::automaticallyChecksForUpdates() const {
    @autoreleasepool {
        return session_ && [session_->updater() automaticallyChecksForUpdates];
    }
}

void DarwinUpdateEngine::setAutomaticallyChecksForUpdates(bool automatic) {
    @autoreleasepool {
        if (session_)
            [session_->updater() setAutomaticallyChecksForUpdates:automatic];
    }
}

std::optional<double> DarwinUpdateEngine::lastUpdateCheckDate() const {
    @autoreleasepool {
        NSDate* const date = session_ ? [session_->updater() lastUpdateCheckDate] : nil;
        return date != nil ? std::optional([date timeIntervalSince1970]) : std::nullopt;
    }
}

void DarwinUpdateEngine::windowWasSeen() {
    @autoreleasepool {
        if (std::exchange(windowWasSeen_, true) || !session_)
            return;
        session_->allowUnbiddenChecks();
    }
}

std::shared_ptr<UpdateEngine> currentUpdateEngine(UpdateSetup setup) {
    return std::make_shared<DarwinUpdateEngine>(std::move(setup.version), std::move(setup.build));
}

} // namespace vantoro
