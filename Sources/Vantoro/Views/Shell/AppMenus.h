// The menus at the top of the screen. The bar belongs to no window: the system shows it whenever the program is in
// front.
#pragma once

#include "Views/Shell/AppMenusModel.h"

#include <memory>
#include <QObject>

class QAction;
class QMenuBar;

namespace vantoro {

class AppMenus : public QObject {
    Q_OBJECT
public:
    AppMenus();
    ~AppMenus() override;

    const QMenuBar& bar() const { return *bar_; }

signals:
    void chosen(AppCommand command);

private:
    void refresh();

    std::unique_ptr<QMenuBar> bar_;
    /// In the model's order; owned by Qt as children of their menus.
    std::vector<QAction*> actions_;
};

} // namespace vantoro
