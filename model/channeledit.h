#pragma once

// The engineer's edits of a channel on the configuration page. Each field is one that the
// extension file keeps (the ".cfg" stays as the recorder wrote it), so an edit survives a save
// and a reopen: the name shown (the alias), the signal class and the rated frequency of an
// analog channel, the name shown of a status channel.

#include <QString>

class CCmtd99File;

enum class ChannelField
{
    Name,      // the alias: shown in place of the recorder's name
    Class,     // signal class code ("ACV", "ACC", "DCV", ...), analog only
    RatedFreq, // Hz, analog only
};

// The field as the page shows it.
QString ChannelFieldText(const CCmtd99File &file, bool analog, int position, ChannelField field);

// Takes a value typed by the engineer; false with the reason (nothing changed) when it cannot
// be taken. The channel's store follows at once (class, phase, name).
bool SetChannelField(CCmtd99File &file, bool analog, int position, ChannelField field, const QString &text,
                     QString *reason);
