#include "Shared/NaniteAssemblyLuaText.h"

#include "Containers/StringConv.h"

#include <lua.hpp>

namespace CVAI::NaniteAssembly
{
	FString TextFromUtf8(const char* Utf8)
	{
		if (!Utf8 || !*Utf8)
		{
			return FString();
		}
		const FUTF8ToTCHAR Converted(Utf8);
		return FString::ConstructFromPtrSize(Converted.Get(), Converted.Length());
	}

	void PushText(lua_State* L, const FString& Text)
	{
		const FTCHARToUTF8 Converted(*Text, Text.Len());
		lua_pushlstring(L, (const char*)Converted.Get(), (size_t)Converted.Length());
	}
}
