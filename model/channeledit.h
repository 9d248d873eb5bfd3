#pragma once

// The engineer's edits of a channel on the configuration page. Most fields are ones that the
// extension file keeps (the ".cfg" stays as the recorder wrote it), so an edit survives a save
// of the extension file and a reopen: the name shown (the alias), the signal class, the rated
// frequency and the transformer ratio (as ratings) of an analog channel; the name, kind and
// class of a status channel. Phase, monitored component, unit, P/S and normal state belong to
// the ".cfg": they act at once but are kept only by a Save As, which writes the ".cfg".

#include <QString>

class CCmtd99File;

enum class ChannelField
{
    Name,        // the alias: shown in place of the recorder's name
    Class,       // signal class code ("ACV", "ACC", "DCV", ...), analog only
    RatedFreq,   // Hz, analog only
    Phase,       // "A", "B", "C", "N", ... (the ".cfg" `ph`)
    Component,   // the monitored component: the plant unit the channel belongs to
    Unit,        // analog only: "V", "kV", "A", ...
    Primary,     // analog only: transformer ratio, primary factor
    Secondary,   // analog only: transformer ratio, secondary factor
    PS,          // analog only: whether the file's values are primary ("P") or secondary ("S")
    NormalState, // status only: "0" or "1"
    Kind,        // status only: status kind code ("Jump_A", ...)
    StatusClass, // status only: "Relay_Act", "Breaker_Pos", ...
};

// Whether only the ".cfg" keeps the field, so that a save of the extension file loses it.
bool ChannelFieldInCfgOnly(ChannelField field);

// The field as the page shows it.
QString ChannelFieldText(const CCmtd99File &file, bool analog, int position, ChannelField field);

// Takes a value typed by the engineer; false with the reason (nothing changed) when it cannot
// be taken. The channel's store follows at once (class, phase, name).
bool SetChannelField(CCmtd99File &file, bool analog, int position, ChannelField field, const QString &text,
                     QString *reason);
