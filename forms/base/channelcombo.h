#pragma once

// The channel choosers of the forms' dialogs: a combo box that starts with "[Choose Nothing]"
// and lists the recording's analog channels (those a test lets through) with their class icon,
// the channel itself kept in the entry's user role.

#include <QIcon>

#include <cstdint>
#include <functional>

class CChnMapAnalog;
class CCmtd99File;
class QComboBox;

// The icon of a channel class in lists and choosers.
QIcon ChannelClassIcon(int chnClass);

// Fills `combo` anew and selects `chosen` when it is offered; a null `accept` offers all.
void FillChannelCombo(QComboBox *combo, const CCmtd99File &file, uint32_t displayFlags,
                      const CChnMapAnalog *chosen,
                      const std::function<bool(const CChnMapAnalog &)> &accept = {});
// Offers the channels of one class.
void FillChannelCombo(QComboBox *combo, const CCmtd99File &file, uint32_t displayFlags,
                      const CChnMapAnalog *chosen, int chnClass);
// The channel of the current entry, null for "[Choose Nothing]".
CChnMapAnalog *ComboChannel(const QComboBox *combo);
// Selects the entry of `chn` when the combo offers it; false otherwise.
bool SelectComboChannel(QComboBox *combo, const CChnMapAnalog *chn);
