#include "Platform/UpdateEngine.h"

namespace vantoro {

std::shared_ptr<UpdateEngine> currentUpdateEngine(UpdateSetup /*setup*/) {
    return nullptr;
}

} // namespace vantoro
