// What every benchmark that touches the settings store needs first.
#pragma once

// Points the store at a fresh private folder (once per process) and sets
// the program's root key. Call it from a benchmark, not at static
// initialisation: the store's own globals may not be constructed yet then.
void UsePrivateSettingsStore();
