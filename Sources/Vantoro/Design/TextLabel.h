// Text in one colour: a line that elides, a paragraph that wraps, or one whose lines are about equally long.
#pragma once

#include "Design/PaintedWidget.h"

#include <QStringList>

namespace vantoro {

/// What every label has: its text, which is also its accessible name, and its tooltip while it is not all to be seen.
class Label : public PaintedWidget {
    Q_OBJECT
public:
    const QString& text() const { return text_; }
    void setText(const QString& text);
    void setTone(Tone tone);
    /// Read as a heading rather than as plain text.
    void setHeading(bool heading) { isHeading_ = heading; }
    Description describe() override;

protected:
    Label(Look& look, Tone tone, QWidget* parent) : PaintedWidget(look, parent), tone_(tone) {}
    /// How the text was broken holds no more.
    virtual void forgetLines() = 0;
    void themeChanged() override { forgetLines(); }
    /// Takes the height that its width asks for, or is one line.
    void setParagraph(bool isParagraph);
    void explain(bool isCut) { setToolTip(isCut ? text_ : QString()); }
    QColor ink() const { return color(tone_); }

private:
    QString text_;
    Tone tone_;
    bool isHeading_ = false;
};

/// One style: one line that elides, or a paragraph that wraps and asks for the height it needs.
class TextLabel : public Label {
    Q_OBJECT
public:
    TextLabel(Look& look, const TextStyle& style, Tone tone, QWidget* parent = nullptr);

    void setStyle(const TextStyle& style);
    void setAlignment(Qt::Alignment alignment);
    /// Wraps instead of eliding; at most `lines` (0: as many as it takes), the last one elided in the middle.
    void setWraps(bool wraps, int lines = 0);
    /// A text that wraps takes the height of the longest of these too, so that nothing below it moves when it becomes
    /// another of them.
    void keepRoomFor(const QStringList& texts);

    bool hasHeightForWidth() const override { return wraps_; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void forgetLines() override;

private:
    const QStringList& lines(double width) const;
    int linesKept(double width) const;

    TextStyle style_;
    QStringList alternatives_;
    Qt::Alignment alignment_ = Qt::AlignLeft;
    bool wraps_ = false;
    int mostLines_ = 0;
    mutable double brokenAt_ = -1;
    mutable QStringList broken_;
    mutable double keptAt_ = -1;
    mutable int kept_ = 0;
};

/// The lines of a paragraph at this width, broken between words. Used by what paints paragraphs itself.
QStringList brokenLines(const QString& text, const QFont& font, double width);

/// A paragraph whose lines are about equally long, set in the largest of a few styles that lets it fit.
class BalancedLabel : public Label {
    Q_OBJECT
public:
    /// A style, and the most lines that it may take; 0 is as many as it needs.
    struct Step {
        TextStyle style;
        int mostLines = 0;
    };

    /// The largest first. A text too long even for the last step is elided in the middle.
    BalancedLabel(Look& look, std::vector<Step> steps, Tone tone, QWidget* parent = nullptr);

    /// The style it is set in at this width.
    const TextStyle& styleAt(int width) const { return set(width).style; }
    /// Its lines at this width.
    const QStringList& linesAt(int width) const { return set(width).lines; }

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void forgetLines() override { set_.width = -1; }

private:
    struct Setting {
        int width = -1;
        TextStyle style;
        QStringList lines;
        bool isElided = false;
    };
    const Setting& set(int width) const;

    std::vector<Step> steps_;
    mutable Setting set_;
};

/// The lines of a paragraph, as few as the width allows and as equal as these few can be.
QStringList balancedLines(const QString& text, const QFont& font, double width);

} // namespace vantoro
