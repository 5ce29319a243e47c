#pragma once

#include "Editor/EditorEngine.h"

// The editor, or null when none runs.
extern UNREALED_API UEditorEngine* GEditor;
