// Harness-only: what a localised text keeps beyond its display string.
#pragma once

#include "Internationalization/Text.h"

namespace UE::Headless
{
	struct FTextAccess
	{
		[[nodiscard]] static const FString& GetNamespace(const FText& Text) { return Text.Namespace; }
		[[nodiscard]] static const FString& GetKey(const FText& Text) { return Text.Key; }
	};
}
