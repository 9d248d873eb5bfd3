#pragma once

// `veldrix-cli events`: the status event list of a recording, every change of state of its
// status channels in time order with the delta time against a base point, as the list form
// shows it.
int RunEvents(int argc, char **argv);
