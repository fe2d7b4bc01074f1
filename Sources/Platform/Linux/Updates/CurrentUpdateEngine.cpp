#include "Platform/CurrentUpdateEngine.h"

#include "Platform/Linux/Updates/AppcastEngine.h"

#include <random>

namespace vantoro {

std::shared_ptr<UpdateEngine> currentUpdateEngine(UpdateSetup setup) {
    return std::make_shared<AppcastEngine>(std::move(setup), [source = std::mt19937(std::random_device()())]() mutable {
        return std::uniform_real_distribution<double>(0, 1)(source);
    });
}

} // namespace vantoro
