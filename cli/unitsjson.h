#pragma once

class CCmtd99File;
class JsonWriter;

// The primary device units under "units": lists "lines", "transformers", "powers", "exciters"
// and "groups", each unit with its fields by their code names, its `flags` and its channels.
void WriteUnitsJson(JsonWriter &json, const CCmtd99File &file);
