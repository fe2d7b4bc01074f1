// A paragraph whose lines are about equally long, set in the largest of a few styles that lets it fit.
#pragma once

#include "Design/PaintedWidget.h"

#include <QStringList>

namespace vantoro {

/// The lines of a paragraph, as few as the width allows and as equal as these few can be.
QStringList balancedLines(const QString& text, const QFont& font, double width);

class BalancedLabel : public PaintedWidget {
    Q_OBJECT
public:
    /// A style, and the most lines that it may take; 0 is as many as it needs.
    struct Step {
        TextStyle style;
        int mostLines = 0;
    };

    /// The largest first. A text too long even for the last step is elided in the middle.
    BalancedLabel(Look& look, std::vector<Step> steps, Tone tone, QWidget* parent = nullptr);

    const QString& text() const { return text_; }
    void setText(const QString& text);
    /// Read as a heading rather than as plain text.
    void setHeading(bool heading) { heading_ = heading; }

    /// The style it is set in at this width.
    const TextStyle& styleAt(int width) const { return set(width).style; }
    /// Its lines at this width.
    const QStringList& linesAt(int width) const { return set(width).lines; }

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

private:
    struct Setting {
        int width = -1;
        TextStyle style;
        QStringList lines;
        bool isElided = false;
    };
    const Setting& set(int width) const;

    std::vector<Step> steps_;
    Tone tone_;
    QString text_;
    bool heading_ = false;
    mutable Setting set_;
};

} // namespace vantoro
