#include "Views/View.h"

namespace vantoro {

View::View(ViewContext& context, QWidget* parent) : PaintedWidget(context.look, parent), context_(context) {
    connect(&context.hub, &SensorHub::refreshed, this, [this] {
        if (isVisible())
            refresh();
    });
}

void View::showEvent(QShowEvent* event) {
    refresh();
    PaintedWidget::showEvent(event);
}

} // namespace vantoro
