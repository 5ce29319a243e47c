#include "CoreGlobals.h"

bool GIsEditor = true;
bool GIsTransacting = false;
bool GIsEditorLoadingPackage = false;
bool GIsAutomationTesting = false;
bool GIsRunningUnattendedScript = false;
ITransaction* GUndo = nullptr;
