#include "Editor/Transactor.h"

#include "Headless/ObjectRegistry.h"

IMPLEMENT_HEADLESS_CLASS(UTransactor, "Transactor")
