#pragma once

class CCmtd99File;
class JsonWriter;

// `veldrix-cli info`: the description of a recording as the program reads it.
int RunInfo(int argc, char **argv);
void WriteDescriptionJson(JsonWriter &json, const char *path, const CCmtd99File &file, bool loadOk);
