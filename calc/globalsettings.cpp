#include "globalsettings.h"

int16_t colorScheme = 1;
int32_t dftWin = 0;
int32_t dftMethod = 0;
bool PhComp = false;
int32_t statusMinWidth = 2;
