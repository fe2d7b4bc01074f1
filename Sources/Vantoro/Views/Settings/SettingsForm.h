// The pieces of a form: groups of rows on a panel, each row a title, what is chosen there, and a note below.
#pragma once

#include "Design/Panel.h"
#include "Design/ScrollPane.h"
#include "Design/TextLabel.h"

#include <QHBoxLayout>

namespace vantoro {

/// 44 points high, more with a note or something under its title.
class SettingsRow : public PaintedWidget {
    Q_OBJECT
public:
    SettingsRow(Look& look, const QString& title, QWidget* parent = nullptr);

    void setTitle(const QString& title) { title_->setText(title); }
    const QString& title() const { return title_->text(); }
    /// Sets the title off, for the row that says what its slider stands at.
    void setTitleStyle(const TextStyle& style) { title_->setStyle(style); }
    /// A text at the right end.
    void setValue(const QString& value);
    const QString& value() const { return value_->text(); }
    /// A control at the right end; it draws itself this much smaller than it is on every side.
    void setControl(QWidget& control, int ringMargin);
    /// A control as wide as the row, under the title.
    void setWideControl(QWidget& control, int ringMargin);
    /// An empty note takes no room.
    void setNote(const QString& note);
    /// The note keeps the height of the longest of what it may come to say.
    void keepRoomForNotes(const QStringList& notes) { note_->keepRoomFor(notes); }
    /// More room between the title's line and the note, under a button.
    void setRoomAboveNote(int points) {
        noteLayout_->setContentsMargins(Space::panelPadding, points, Space::panelPadding, 0);
    }
    const QString& note() const { return note_->text(); }

protected:
    void themeChanged() override { placeLine(); }

private:
    void placeLine();

    QWidget* line_;           // owned by Qt as a child, as are all below
    QHBoxLayout* lineLayout_; // the title and what stands at the right end
    QVBoxLayout* rows_;
    QHBoxLayout* noteLayout_;
    TextLabel* title_;
    TextLabel* value_;
    TextLabel* note_;
    QWidget* wide_ = nullptr;
    int rightMargin_;
};

/// A panel of rows with lines between them.
class SettingsGroup : public PaintedWidget {
    Q_OBJECT
public:
    SettingsGroup(Look& look, const QString& title, QWidget* parent = nullptr);

    SettingsRow& addRow(const QString& title);
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString title_;
    QVBoxLayout* layout_;
    std::vector<SettingsRow*> rows_; // owned by Qt as children
};

/// Titled groups under each other, and a last word below them.
class SettingsForm : public ScrollPane {
    Q_OBJECT
public:
    explicit SettingsForm(Look& look, QWidget* parent = nullptr);

    /// After the groups that are there, before the last word.
    SettingsGroup& addGroup(const QString& title);
    void setLastWord(const QString& text) { lastWord_->setText(text); }
    /// Scrolls until the group is in sight.
    void reveal(SettingsGroup& group) { ensureWidgetVisible(&group, 0, Space::windowMargin); }

private:
    /// Texts outside the groups stand above those inside.
    QLayout* inset(TextLabel* label, int below);

    Look& look_;
    TextLabel* lastWord_; // owned by Qt as a child
    int groups_ = 0;
};

} // namespace vantoro
