// All that the Now pane, the menu bar and its panel say at a moment, to be looked through.
#pragma once

#include "Views/MenuBar/MenuBarModel.h"
#include "Views/Now/NowModel.h"
#include "Views/Suspects/SuspectsModel.h"

#include "Views/Stage.h"

namespace vantoro::testing {

inline QStringList textsOf(const DialsModel& dials) {
    QStringList texts{dials.peakFigure, dials.peakUnit};
    for (const FanRotorFigures& rotor : dials.rotors)
        texts << rotor.figure + u' ' + rotor.unit << rotor.caption << rotor.spokenName << rotor.spokenValue;
    if (dials.dial)
        texts << dials.dial->figure + dials.dial->unit << dials.dial->caption << dials.dial->gapCaption
              << dials.dial->gapFigure << dials.dial->spokenName << dials.dial->spokenValue;
    if (dials.fans) {
        texts << dials.fans->title << dials.fans->foot;
        for (const FanListModel::Row& row : dials.fans->rows)
            texts << row.spoken;
    }
    return texts;
}

inline QStringList everyText(const Stage& stage) {
    const HeroModel hero = heroModel(stage.hub, stage.settings);
    const SuspectsModel suspects = suspectsModel(stage.hub);
    const AdviceModel advice = adviceModel(stage.hub);
    const FactsModel facts = factsModel(stage.hub);
    const MenuBarModel item = menuBarModel(stage.hub, true, false);
    const MenuBarPanelModel panel = menuBarPanelModel(stage.hub, stage.settings);
    QStringList texts{hero.eyebrow.label, hero.eyebrow.spokenValue, hero.headline,      hero.detail,  hero.fanLine,
                      suspects.title,     suspects.caption,         suspects.emptyText, advice.title, advice.emptyText,
                      item.tooltip,       item.figure.value_or(""), panel.title,        panel.cause,  panel.noSuspects,
                      facts.caption};
    texts << textsOf(hero.dials) << textsOf({.rotors = {}, .dial = panel.dial, .fans = {}});
    for (const FactModel& fact : facts.facts)
        texts << fact.title + u' ' + fact.value << fact.detail;
    for (const MenuBarPanelModel::Figure& figure : panel.figures)
        texts << figure.caption << figure.figure + figure.unit;
    for (const AdviceItemModel& one : advice.items)
        texts << one.text << one.note;
    for (const SuspectRowModel& row : suspects.rows)
        texts << row.name << row.about << row.explanation << row.details;
    return texts;
}

} // namespace vantoro::testing
