#include "StringFormat.h"

#include <cstdio>
#include <string>

namespace UE::Core::Private
{
	namespace
	{
		struct FSpec
		{
			std::string Flags;
			int Width = -1;
			int Precision = -1;
			std::string Length;
			char Conversion = 0;
		};

		void AppendPadded(FString& Out, const TCHAR* Text, int32 TextLen, const FSpec& Spec)
		{
			const bool bLeft = Spec.Flags.find('-') != std::string::npos;
			const int32 Pad = Spec.Width > TextLen ? Spec.Width - TextLen : 0;
			if (!bLeft)
			{
				for (int32 Index = 0; Index < Pad; ++Index)
				{
					Out.AppendChar(TEXT(' '));
				}
			}
			Out.Append(Text, TextLen);
			if (bLeft)
			{
				for (int32 Index = 0; Index < Pad; ++Index)
				{
					Out.AppendChar(TEXT(' '));
				}
			}
		}

		template <typename ValueType>
		void AppendPrintf(FString& Out, const std::string& Format, ValueType Value)
		{
			char Small[128];
			const int Needed = std::snprintf(Small, sizeof(Small), Format.c_str(), Value);
			if (Needed < 0)
			{
				return;
			}
			std::string Large;
			const char* Text = Small;
			if (Needed >= (int)sizeof(Small))
			{
				Large.resize((size_t)Needed + 1);
				std::snprintf(Large.data(), Large.size(), Format.c_str(), Value);
				Text = Large.data();
			}
			for (int Index = 0; Index < Needed; ++Index)
			{
				Out.AppendChar((TCHAR)(unsigned char)Text[Index]);
			}
		}

		// Formats one numeric conversion with the C library; the spec only ever holds characters we parsed.
		void AppendNumber(FString& Out, const FSpec& Spec, va_list& Args)
		{
			std::string Format = "%" + Spec.Flags;
			if (Spec.Width >= 0)
			{
				Format += std::to_string(Spec.Width);
			}
			if (Spec.Precision >= 0)
			{
				Format += "." + std::to_string(Spec.Precision);
			}

			switch (Spec.Conversion)
			{
			case 'd':
			case 'i':
			case 'u':
			case 'x':
			case 'X':
			case 'o':
			{
				const bool bSigned = Spec.Conversion == 'd' || Spec.Conversion == 'i';
				Format += "ll";
				Format += Spec.Conversion;
				long long Wide = 0;
				if (Spec.Length == "ll" || Spec.Length == "l" || Spec.Length == "j" || Spec.Length == "z" || Spec.Length == "I64")
				{
					Wide = va_arg(Args, long long);
				}
				else
				{
					const int Value = va_arg(Args, int);
					if (Spec.Length == "h")
					{
						Wide = bSigned ? (long long)(short)Value : (long long)(unsigned short)Value;
					}
					else if (Spec.Length == "hh")
					{
						Wide = bSigned ? (long long)(signed char)Value : (long long)(unsigned char)Value;
					}
					else
					{
						Wide = bSigned ? (long long)Value : (long long)(unsigned int)Value;
					}
				}
				if (bSigned)
				{
					AppendPrintf(Out, Format, Wide);
				}
				else
				{
					AppendPrintf(Out, Format, (unsigned long long)Wide);
				}
				break;
			}
			case 'p':
				AppendPrintf(Out, std::string("%p"), va_arg(Args, void*));
				break;
			default:
				Format += Spec.Conversion;
				AppendPrintf(Out, Format, va_arg(Args, double));
				break;
			}
		}
	}

	FString FormatV(const TCHAR* Fmt, va_list InArgs)
	{
		FString Out;
		if (!Fmt)
		{
			return Out;
		}

		va_list Args;
		va_copy(Args, InArgs);

		const TCHAR* Cursor = Fmt;
		while (*Cursor)
		{
			if (*Cursor != TEXT('%'))
			{
				const TCHAR* Start = Cursor;
				while (*Cursor && *Cursor != TEXT('%'))
				{
					++Cursor;
				}
				Out.Append(Start, (int32)(Cursor - Start));
				continue;
			}

			const TCHAR* SpecStart = Cursor;
			++Cursor;
			if (*Cursor == TEXT('%'))
			{
				Out.AppendChar(TEXT('%'));
				++Cursor;
				continue;
			}

			FSpec Spec;
			while (*Cursor == TEXT('-') || *Cursor == TEXT('+') || *Cursor == TEXT(' ') || *Cursor == TEXT('0') || *Cursor == TEXT('#'))
			{
				Spec.Flags += (char)*Cursor;
				++Cursor;
			}
			if (*Cursor == TEXT('*'))
			{
				Spec.Width = va_arg(Args, int);
				if (Spec.Width < 0)
				{
					Spec.Flags += '-';
					Spec.Width = -Spec.Width;
				}
				++Cursor;
			}
			else
			{
				while (*Cursor >= TEXT('0') && *Cursor <= TEXT('9'))
				{
					Spec.Width = (Spec.Width < 0 ? 0 : Spec.Width) * 10 + (*Cursor - TEXT('0'));
					++Cursor;
				}
			}
			if (*Cursor == TEXT('.'))
			{
				++Cursor;
				Spec.Precision = 0;
				if (*Cursor == TEXT('*'))
				{
					Spec.Precision = va_arg(Args, int);
					++Cursor;
				}
				else
				{
					while (*Cursor >= TEXT('0') && *Cursor <= TEXT('9'))
					{
						Spec.Precision = Spec.Precision * 10 + (*Cursor - TEXT('0'));
						++Cursor;
					}
				}
			}
			while (*Cursor == TEXT('h') || *Cursor == TEXT('l') || *Cursor == TEXT('z') || *Cursor == TEXT('j') || *Cursor == TEXT('I')
				|| *Cursor == TEXT('6') || *Cursor == TEXT('4'))
			{
				Spec.Length += (char)*Cursor;
				++Cursor;
			}
			Spec.Conversion = (char)*Cursor;
			if (*Cursor)
			{
				++Cursor;
			}

			switch (Spec.Conversion)
			{
			case 's':
			case 'S':
			{
				if (Spec.Length == "h" || Spec.Conversion == 'S')
				{
					const ANSICHAR* Value = va_arg(Args, const ANSICHAR*);
					const FString Converted(Value ? Value : "(null)");
					const int32 Len = Spec.Precision >= 0 && Spec.Precision < Converted.Len() ? Spec.Precision : Converted.Len();
					AppendPadded(Out, *Converted, Len, Spec);
				}
				else
				{
					const TCHAR* Value = va_arg(Args, const TCHAR*);
					if (!Value)
					{
						Value = TEXT("(null)");
					}
					int32 Len = FCString::Strlen(Value);
					if (Spec.Precision >= 0 && Spec.Precision < Len)
					{
						Len = Spec.Precision;
					}
					AppendPadded(Out, Value, Len, Spec);
				}
				break;
			}
			case 'c':
			{
				const TCHAR Value = (TCHAR)va_arg(Args, int);
				AppendPadded(Out, &Value, 1, Spec);
				break;
			}
			case 'd':
			case 'i':
			case 'u':
			case 'x':
			case 'X':
			case 'o':
			case 'f':
			case 'F':
			case 'e':
			case 'E':
			case 'g':
			case 'G':
			case 'p':
				AppendNumber(Out, Spec, Args);
				break;
			default:
				// An unknown conversion is copied as it stands.
				Out.Append(SpecStart, (int32)(Cursor - SpecStart));
				break;
			}
		}

		va_end(Args);
		return Out;
	}
}
