// Painting that wakes nobody else: neither threads of this program nor, picture by picture, the screen's server for an
// answer.
#pragma once

namespace vantoro {

/// Around the making of the application object: the toolkit decides then how it paints. Linux: no threads for filling
/// shapes, and pictures that are sent to the X server rather than shared with it. Mac: nothing to be said.
class QuietPainting {
public:
    QuietPainting();
    ~QuietPainting();
    QuietPainting(const QuietPainting&) = delete;
    QuietPainting& operator=(const QuietPainting&) = delete;

private:
    bool asksForSending_ = false;
};

} // namespace vantoro
