#include "StringFormat.h"

#include <cstdio>
#include <string>

namespace UE::Core::Private
{
	namespace
	{
		struct FConversion
		{
			std::string Flags;
			int Width = -1;
			int Precision = -1;
			std::string Length;
			char Conversion = 0;
		};

		void AppendPadded(FString& Out, const TCHAR* Text, int32 TextLen, const FConversion& Conversion)
		{
			const bool bLeft = Conversion.Flags.find('-') != std::string::npos;
			const int32 Pad = Conversion.Width > TextLen ? Conversion.Width - TextLen : 0;
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

		// Formats one numeric conversion with the C library; the conversion only ever holds characters we parsed.
		void AppendNumber(FString& Out, const FConversion& Conversion, va_list& Args)
		{
			std::string Format = "%" + Conversion.Flags;
			if (Conversion.Width >= 0)
			{
				Format += std::to_string(Conversion.Width);
			}
			if (Conversion.Precision >= 0)
			{
				Format += "." + std::to_string(Conversion.Precision);
			}

			switch (Conversion.Conversion)
			{
			case 'd':
			case 'i':
			case 'u':
			case 'x':
			case 'X':
			case 'o':
			{
				const bool bSigned = Conversion.Conversion == 'd' || Conversion.Conversion == 'i';
				Format += "ll";
				Format += Conversion.Conversion;
				long long Wide = 0;
				if (Conversion.Length == "ll" || Conversion.Length == "l" || Conversion.Length == "j" || Conversion.Length == "z" || Conversion.Length == "I64")
				{
					Wide = va_arg(Args, long long);
				}
				else
				{
					const int Value = va_arg(Args, int);
					if (Conversion.Length == "h")
					{
						Wide = bSigned ? (long long)(short)Value : (long long)(unsigned short)Value;
					}
					else if (Conversion.Length == "hh")
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
				Format += Conversion.Conversion;
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

			const TCHAR* ConversionStart = Cursor;
			++Cursor;
			if (*Cursor == TEXT('%'))
			{
				Out.AppendChar(TEXT('%'));
				++Cursor;
				continue;
			}

			FConversion Conversion;
			while (*Cursor == TEXT('-') || *Cursor == TEXT('+') || *Cursor == TEXT(' ') || *Cursor == TEXT('0') || *Cursor == TEXT('#'))
			{
				Conversion.Flags += (char)*Cursor;
				++Cursor;
			}
			if (*Cursor == TEXT('*'))
			{
				Conversion.Width = va_arg(Args, int);
				if (Conversion.Width < 0)
				{
					Conversion.Flags += '-';
					Conversion.Width = -Conversion.Width;
				}
				++Cursor;
			}
			else
			{
				while (*Cursor >= TEXT('0') && *Cursor <= TEXT('9'))
				{
					Conversion.Width = (Conversion.Width < 0 ? 0 : Conversion.Width) * 10 + (*Cursor - TEXT('0'));
					++Cursor;
				}
			}
			if (*Cursor == TEXT('.'))
			{
				++Cursor;
				Conversion.Precision = 0;
				if (*Cursor == TEXT('*'))
				{
					Conversion.Precision = va_arg(Args, int);
					++Cursor;
				}
				else
				{
					while (*Cursor >= TEXT('0') && *Cursor <= TEXT('9'))
					{
						Conversion.Precision = Conversion.Precision * 10 + (*Cursor - TEXT('0'));
						++Cursor;
					}
				}
			}
			while (*Cursor == TEXT('h') || *Cursor == TEXT('l') || *Cursor == TEXT('z') || *Cursor == TEXT('j') || *Cursor == TEXT('I')
				|| *Cursor == TEXT('6') || *Cursor == TEXT('4'))
			{
				Conversion.Length += (char)*Cursor;
				++Cursor;
			}
			Conversion.Conversion = (char)*Cursor;
			if (*Cursor)
			{
				++Cursor;
			}

			switch (Conversion.Conversion)
			{
			case 's':
			case 'S':
			{
				if (Conversion.Length == "h" || Conversion.Conversion == 'S')
				{
					const ANSICHAR* Value = va_arg(Args, const ANSICHAR*);
					const FString Converted(Value ? Value : "(null)");
					const int32 Len = Conversion.Precision >= 0 && Conversion.Precision < Converted.Len() ? Conversion.Precision : Converted.Len();
					AppendPadded(Out, *Converted, Len, Conversion);
				}
				else
				{
					const TCHAR* Value = va_arg(Args, const TCHAR*);
					if (!Value)
					{
						Value = TEXT("(null)");
					}
					int32 Len = FCString::Strlen(Value);
					if (Conversion.Precision >= 0 && Conversion.Precision < Len)
					{
						Len = Conversion.Precision;
					}
					AppendPadded(Out, Value, Len, Conversion);
				}
				break;
			}
			case 'c':
			{
				const TCHAR Value = (TCHAR)va_arg(Args, int);
				AppendPadded(Out, &Value, 1, Conversion);
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
				AppendNumber(Out, Conversion, Args);
				break;
			default:
				// An unknown conversion is copied as it stands.
				Out.Append(ConversionStart, (int32)(Cursor - ConversionStart));
				break;
			}
		}

		va_end(Args);
		return Out;
	}
}
