// The writer of the extension file.

#include "cmtd99file.h"

#include "safewrite.h"

bool CCmtd99File::SaveInf(const char *path)
{
    Q_UNUSED(path);
    return false;
}

void CCmtd99File::WriteInf(CTextOutput &out)
{
    Q_UNUSED(out);
}

bool CCmtd99File::WriteInfSections(CTextOutput &out, uint32_t mask)
{
    Q_UNUSED(out);
    Q_UNUSED(mask);
    return true;
}
