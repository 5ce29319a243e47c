// Process-wide state flags of the engine.
#pragma once

#include "HAL/Platform.h"

extern CORE_API bool GIsEditor;
// True while the transaction system applies an Undo or Redo.
extern CORE_API bool GIsTransacting;
// True while the editor loads a package; nothing is dirtied meanwhile.
extern CORE_API bool GIsEditorLoadingPackage;
extern CORE_API bool GIsAutomationTesting;
extern CORE_API bool GIsRunningUnattendedScript;

class ITransaction;
// The transaction that is open now, or null.
extern CORE_API ITransaction* GUndo;
