// The readers and writers of the unit sections of the extension file.

#include "units.h"

#include "cmtd99file.h"
#include "safewrite.h"

int ReadInfUnitSection(CCmtd99File &file, InfUnitSection kind, const QByteArray &head,
                       const InfKeyLines &keys)
{
    Q_UNUSED(file);
    Q_UNUSED(kind);
    Q_UNUSED(head);
    Q_UNUSED(keys);
    return 3;
}

void WriteInfUnitSections(CTextOutput &out, const CCmtd99File &file, uint32_t mask)
{
    Q_UNUSED(out);
    Q_UNUSED(file);
    Q_UNUSED(mask);
}

int16_t WindingModeCode(const QByteArray &text)
{
    Q_UNUSED(text);
    return 100;
}
