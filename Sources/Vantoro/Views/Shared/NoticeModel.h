// What the program says about a desktop that has no place for the menu-bar item.
#pragma once

#include <QString>

namespace vantoro {

struct Notice {
    QString title;
    QString text;
    QString answer;
};

Notice missingMenuBarNotice();

} // namespace vantoro
