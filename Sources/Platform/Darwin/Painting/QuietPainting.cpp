#include "Platform/QuietPainting.h"

namespace vantoro {

QuietPainting::QuietPainting() = default;

QuietPainting::~QuietPainting() = default;

} // namespace vantoro
