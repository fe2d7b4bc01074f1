// Text in one style and colour: one line that elides, or a paragraph that wraps and asks for the height it needs.
#pragma once

#include "Design/PaintedWidget.h"

#include <QTextLayout>

namespace vantoro {

class TextLabel : public PaintedWidget {
    Q_OBJECT
public:
    TextLabel(Look& look, const TextStyle& style, Tone tone, QWidget* parent = nullptr);

    const QString& text() const { return text_; }
    /// The whole text is also the accessible name, and the tooltip while it is elided.
    void setText(const QString& text);
    void setStyle(const TextStyle& style);
    void setTone(Tone tone);
    void setAlignment(Qt::Alignment alignment);
    /// Wraps instead of eliding; at most `lines` (0: as many as it takes), the last one elided in the middle.
    void setWraps(bool wraps, int lines = 0);
    /// A text that wraps takes the height of the longest of these too, so that nothing below it moves when it becomes
    /// another of them.
    void keepRoomFor(const QStringList& texts);
    /// Read as a heading rather than as plain text.
    void setHeading(bool heading);

    bool hasHeightForWidth() const override { return wraps_; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

private:
    struct Line {
        QString text;
    };
    std::vector<Line> lines(double width) const;
    int linesKept(double width) const;

    TextStyle style_;
    Tone tone_;
    QString text_;
    QStringList alternatives_;
    Qt::Alignment alignment_ = Qt::AlignLeft;
    bool wraps_ = false;
    int mostLines_ = 0;
    bool heading_ = false;
    mutable double brokenAt_ = -1;
    mutable std::vector<Line> broken_;
    mutable double keptAt_ = -1;
    mutable int kept_ = 0;
};

/// The lines of a paragraph at this width, broken between words. Used by what paints paragraphs itself.
QStringList brokenLines(const QString& text, const QFont& font, double width);

} // namespace vantoro
