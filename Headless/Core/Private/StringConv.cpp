#include "Containers/StringConv.h"

#include "Misc/CString.h"

namespace
{
	constexpr TCHAR BogusChar = TEXT('?');

	void AppendUtf8(TArray<ANSICHAR>& Out, uint32 CodePoint)
	{
		if (CodePoint < 0x80)
		{
			Out.Add((ANSICHAR)CodePoint);
		}
		else if (CodePoint < 0x800)
		{
			Out.Add((ANSICHAR)(0xC0 | (CodePoint >> 6)));
			Out.Add((ANSICHAR)(0x80 | (CodePoint & 0x3F)));
		}
		else if (CodePoint < 0x10000)
		{
			Out.Add((ANSICHAR)(0xE0 | (CodePoint >> 12)));
			Out.Add((ANSICHAR)(0x80 | ((CodePoint >> 6) & 0x3F)));
			Out.Add((ANSICHAR)(0x80 | (CodePoint & 0x3F)));
		}
		else
		{
			Out.Add((ANSICHAR)(0xF0 | (CodePoint >> 18)));
			Out.Add((ANSICHAR)(0x80 | ((CodePoint >> 12) & 0x3F)));
			Out.Add((ANSICHAR)(0x80 | ((CodePoint >> 6) & 0x3F)));
			Out.Add((ANSICHAR)(0x80 | (CodePoint & 0x3F)));
		}
	}

	void AppendUtf16(TArray<TCHAR>& Out, uint32 CodePoint)
	{
		if (CodePoint < 0x10000)
		{
			Out.Add((TCHAR)CodePoint);
		}
		else
		{
			CodePoint -= 0x10000;
			Out.Add((TCHAR)(0xD800 + (CodePoint >> 10)));
			Out.Add((TCHAR)(0xDC00 + (CodePoint & 0x3FF)));
		}
	}

	void ConvertToUtf8(TArray<ANSICHAR>& Out, const TCHAR* Source, int32 SourceLen)
	{
		Out.Reserve(SourceLen + 1);
		for (int32 Index = 0; Index < SourceLen; ++Index)
		{
			const uint32 Unit = Source[Index];
			if (Unit >= 0xD800 && Unit <= 0xDBFF && Index + 1 < SourceLen && Source[Index + 1] >= 0xDC00 && Source[Index + 1] <= 0xDFFF)
			{
				AppendUtf8(Out, 0x10000 + ((Unit - 0xD800) << 10) + ((uint32)Source[Index + 1] - 0xDC00));
				++Index;
			}
			else if (Unit >= 0xD800 && Unit <= 0xDFFF)
			{
				AppendUtf8(Out, BogusChar);
			}
			else
			{
				AppendUtf8(Out, Unit);
			}
		}
		Out.Add('\0');
	}

	// Decodes strict UTF-8: overlong forms, surrogates and code points past U+10FFFF are malformed.
	void ConvertToUtf16(TArray<TCHAR>& Out, const unsigned char* Source, int32 SourceLen)
	{
		Out.Reserve(SourceLen + 1);
		int32 Index = 0;
		while (Index < SourceLen)
		{
			const uint32 Lead = Source[Index];
			int32 Extra = 0;
			uint32 CodePoint = 0;
			uint32 Minimum = 0;
			if (Lead < 0x80)
			{
				Out.Add((TCHAR)Lead);
				++Index;
				continue;
			}
			else if ((Lead & 0xE0) == 0xC0)
			{
				Extra = 1;
				CodePoint = Lead & 0x1F;
				Minimum = 0x80;
			}
			else if ((Lead & 0xF0) == 0xE0)
			{
				Extra = 2;
				CodePoint = Lead & 0x0F;
				Minimum = 0x800;
			}
			else if ((Lead & 0xF8) == 0xF0)
			{
				Extra = 3;
				CodePoint = Lead & 0x07;
				Minimum = 0x10000;
			}
			else
			{
				Out.Add(BogusChar);
				++Index;
				continue;
			}

			bool bValid = Index + Extra < SourceLen;
			for (int32 Continuation = 1; bValid && Continuation <= Extra; ++Continuation)
			{
				const uint32 Byte = Source[Index + Continuation];
				bValid = (Byte & 0xC0) == 0x80;
				CodePoint = (CodePoint << 6) | (Byte & 0x3F);
			}
			if (!bValid || CodePoint < Minimum || CodePoint > 0x10FFFF || (CodePoint >= 0xD800 && CodePoint <= 0xDFFF))
			{
				Out.Add(BogusChar);
				++Index;
				continue;
			}
			AppendUtf16(Out, CodePoint);
			Index += Extra + 1;
		}
		Out.Add(TEXT('\0'));
	}

	int32 AnsiLength(const ANSICHAR* Source)
	{
		return Source ? FCStringAnsi::Strlen(Source) : 0;
	}
}

FTCHARToUTF8::FTCHARToUTF8(const TCHAR* Source)
	: FTCHARToUTF8(Source, Source ? FCString::Strlen(Source) : 0)
{
}

FTCHARToUTF8::FTCHARToUTF8(const TCHAR* Source, int32 SourceLen)
{
	ConvertToUtf8(Buffer, Source, Source ? SourceLen : 0);
}

FUTF8ToTCHAR::FUTF8ToTCHAR(const ANSICHAR* Source)
	: FUTF8ToTCHAR(Source, AnsiLength(Source))
{
}

FUTF8ToTCHAR::FUTF8ToTCHAR(const ANSICHAR* Source, int32 SourceLen)
{
	ConvertToUtf16(Buffer, (const unsigned char*)Source, Source ? SourceLen : 0);
}

FUTF8ToTCHAR::FUTF8ToTCHAR(const UTF8CHAR* Source)
	: FUTF8ToTCHAR((const ANSICHAR*)Source)
{
}

FUTF8ToTCHAR::FUTF8ToTCHAR(const UTF8CHAR* Source, int32 SourceLen)
	: FUTF8ToTCHAR((const ANSICHAR*)Source, SourceLen)
{
}
