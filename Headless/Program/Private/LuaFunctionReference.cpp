#include "Headless/LuaReference.h"

namespace UE::Headless
{
	std::string FLuaFunctionReference::Signature() const
	{
		std::string Text = Name + "(";
		for (size_t Index = 0; Index < Arguments.size(); ++Index)
		{
			Text += (Index > 0 ? ", " : "") + Arguments[Index].Name + (Arguments[Index].bOptional ? "?" : "");
		}
		return Text + ")";
	}
}
