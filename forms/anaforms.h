#pragma once

// Installs the maker of the analysis forms on the wave page: called once by the program
// before the first recording opens.
void InstallAnaForms();
