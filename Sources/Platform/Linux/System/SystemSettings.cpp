#include "Platform/SettingsStore.h"

namespace vantoro {

std::unique_ptr<SettingsStore> systemSettingsStore() {
    return nullptr;
}

} // namespace vantoro
