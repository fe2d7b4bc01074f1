#include "Platform/CurrentUpdateEngine.h"

#include "Platform/Linux/Updates/AppcastEngine.h"

#include <random>

namespace vantoro {

std::shared_ptr<UpdateEngine> currentUpdateEngine(UpdateSetup setup) {
    // Of this copy, not of the one that may have taken its place by then.
    std::string preparer = setup.program.substr(0, setup.program.rfind('/') + 1) + "vantoro-update";
    return std::make_shared<AppcastEngine>(std::move(setup), std::move(preparer),
                                           [source = std::mt19937(std::random_device()())]() mutable {
                                               return std::uniform_real_distribution<double>(0, 1)(source);
                                           });
}

} // namespace vantoro
