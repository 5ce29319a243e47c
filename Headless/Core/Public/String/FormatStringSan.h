// Compile-time checking of printf-style format strings against the types of their arguments, as the
// engine's FString::Printf and UE_LOG check them: every conversion must find an argument of a type it
// accepts, and every argument a conversion. A mismatch stops the compilation: in the consteval
// constructor as a call, not a constant expression, of a function whose name describes the fault; in the
// macro as a failed static_assert that names the fault and the argument's position.
#pragma once

#include "HAL/Platform.h"
#include "Templates/UnrealTemplate.h"

#include <type_traits>

namespace UE::Core::Private::FormatStringSan
{
	enum class EFormatStringSanStatus
	{
		Ok,
		NotEnoughSpecifiers,
		NotEnoughArguments,
		IncompleteFormatSpecifierOrUnescapedPercent,
		InvalidFormatSpec,
		DynamicLengthSpecNeedsIntegerArg,
		SNeedsDereferencedString,
		SNeedsPtrButGotChar,
		SNeedsCharPtrArg,
		SNeedsCharPtrArgOfFormatWidth,
		LSNeedsWideCharPtrArg,
		HSNeedsNarrowCharPtrArg,
		CapitalSNeedsCharPtrArgOfOtherWidth,
		CNeedsCharArg,
		DNeedsIntegerArg,
		ZNeedsIntegerSpec,
		LLNeedsIntegerSpec,
		HHNeedsIntegerSpec,
		LengthModifierNeedsIntegerArg,
		I64BadSpec,
		PNeedsPointerArg,
		FNeedsFloatOrDoubleArg,
	};

	struct FResult
	{
		EFormatStringSanStatus Status = EFormatStringSanStatus::Ok;
		// Zero-based position of the argument at fault (or of the next one expected).
		int ArgPos = 0;
	};

	// What the checker needs to know of one argument's (decayed) type.
	struct FArgKind
	{
		bool bIntegral = false;
		bool bEnum = false;
		bool bFloatOrDouble = false;
		bool bPointer = false;
		bool bCharPointer = false;
		bool bChar = false;
		bool bEngineString = false;
		int Size = 0;
		int PointeeSize = 0;
	};

	template <typename T>
	inline constexpr bool bIsCharType = std::is_same_v<T, char> || std::is_same_v<T, wchar_t> || std::is_same_v<T, char8_t>
		|| std::is_same_v<T, char16_t> || std::is_same_v<T, char32_t>;

	// True for the engine's string classes, which must be dereferenced (*Str) to be formatted.
	template <typename T>
	struct TIsEngineString
	{
		static constexpr bool Value = false;
	};

	template <typename T>
	constexpr FArgKind MakeArgKind()
	{
		using Pointee = std::remove_cv_t<std::remove_pointer_t<T>>;
		FArgKind Kind;
		Kind.bIntegral = std::is_integral_v<T>;
		Kind.bEnum = std::is_enum_v<T>;
		Kind.bFloatOrDouble = std::is_same_v<T, float> || std::is_same_v<T, double>;
		Kind.bPointer = std::is_pointer_v<T>;
		Kind.bCharPointer = std::is_pointer_v<T> && bIsCharType<Pointee>;
		Kind.bChar = bIsCharType<T>;
		Kind.bEngineString = TIsEngineString<T>::Value;
		Kind.Size = (int)sizeof(T);
		if constexpr (std::is_pointer_v<T> && !std::is_void_v<Pointee> && !std::is_function_v<Pointee>)
		{
			Kind.PointeeSize = (int)sizeof(Pointee);
		}
		return Kind;
	}

	template <typename CharType>
	constexpr bool IsDigit(CharType Char)
	{
		return Char >= (CharType)'0' && Char <= (CharType)'9';
	}

	template <typename CharType>
	constexpr bool IsIntegerConversion(CharType Char)
	{
		return Char == (CharType)'d' || Char == (CharType)'i' || Char == (CharType)'u' || Char == (CharType)'x' || Char == (CharType)'X';
	}

	// Judges Format against the arguments, one conversion at a time.
	template <typename CharType>
	constexpr FResult CheckFormat(const CharType* Format, const FArgKind* Args, int NumArgs)
	{
		using E = EFormatStringSanStatus;
		int ArgPos = 0;
		const CharType* At = Format;
		const int FormatCharSize = (int)sizeof(CharType);
		while (true)
		{
			while (*At != (CharType)'\0' && *At != (CharType)'%')
			{
				++At;
			}
			if (*At == (CharType)'\0')
			{
				return ArgPos < NumArgs ? FResult{ E::NotEnoughSpecifiers, ArgPos } : FResult{ E::Ok, ArgPos };
			}
			++At;
			if (*At == (CharType)'%')
			{
				++At;
				continue;
			}
			if (*At == (CharType)'\0')
			{
				return FResult{ E::IncompleteFormatSpecifierOrUnescapedPercent, ArgPos };
			}
			if (ArgPos >= NumArgs)
			{
				return FResult{ E::NotEnoughArguments, ArgPos };
			}

			// Flags, then at most one '-' after them.
			while (*At == (CharType)'+' || *At == (CharType)'#' || *At == (CharType)' ' || *At == (CharType)'0')
			{
				++At;
			}
			if (*At == (CharType)'-')
			{
				++At;
			}
			// Width and precision: digits, or '*' taking an integer argument.
			for (int Part = 0; Part < 2; ++Part)
			{
				if (Part == 1)
				{
					if (*At != (CharType)'.')
					{
						break;
					}
					++At;
				}
				if (*At == (CharType)'*')
				{
					if (ArgPos >= NumArgs)
					{
						return FResult{ E::IncompleteFormatSpecifierOrUnescapedPercent, ArgPos };
					}
					if (!Args[ArgPos].bIntegral && !Args[ArgPos].bEnum)
					{
						return FResult{ E::DynamicLengthSpecNeedsIntegerArg, ArgPos };
					}
					++ArgPos;
					++At;
				}
				else
				{
					while (IsDigit(*At))
					{
						++At;
					}
				}
			}
			if (*At == (CharType)'\0' || *At == (CharType)' ')
			{
				return FResult{ E::IncompleteFormatSpecifierOrUnescapedPercent, ArgPos };
			}
			if (ArgPos >= NumArgs)
			{
				return FResult{ E::NotEnoughArguments, ArgPos };
			}

			const FArgKind& Arg = Args[ArgPos];
			const bool bIntegerLike = Arg.bIntegral || Arg.bEnum;
			const CharType Conversion = *At++;
			const CharType Next = *At;
			E Fault = E::Ok;
			if ((Conversion == (CharType)'l' || Conversion == (CharType)'h') && Next == (CharType)'s')
			{
				++At;
				const int Wanted = Conversion == (CharType)'l' ? (int)sizeof(WIDECHAR) : (int)sizeof(ANSICHAR);
				if (Arg.bEngineString)
				{
					Fault = E::SNeedsDereferencedString;
				}
				else if (Arg.bChar)
				{
					Fault = E::SNeedsPtrButGotChar;
				}
				else if (!Arg.bCharPointer || Arg.PointeeSize != Wanted)
				{
					Fault = Conversion == (CharType)'l' ? E::LSNeedsWideCharPtrArg : E::HSNeedsNarrowCharPtrArg;
				}
			}
			else if (Conversion == (CharType)'s' || Conversion == (CharType)'S')
			{
				if (Arg.bEngineString)
				{
					Fault = E::SNeedsDereferencedString;
				}
				else if (Arg.bChar)
				{
					Fault = E::SNeedsPtrButGotChar;
				}
				else if (!Arg.bCharPointer)
				{
					Fault = E::SNeedsCharPtrArg;
				}
				else if (Conversion == (CharType)'s' && Arg.PointeeSize != FormatCharSize)
				{
					Fault = E::SNeedsCharPtrArgOfFormatWidth;
				}
				else if (Conversion == (CharType)'S' && Arg.PointeeSize == FormatCharSize)
				{
					Fault = E::CapitalSNeedsCharPtrArgOfOtherWidth;
				}
			}
			else if (Conversion == (CharType)'c')
			{
				if (!Arg.bIntegral || Arg.Size > (int)sizeof(int))
				{
					Fault = E::CNeedsCharArg;
				}
			}
			else if (IsIntegerConversion(Conversion))
			{
				if (!bIntegerLike && !(Arg.bPointer && !Arg.bCharPointer))
				{
					Fault = E::DNeedsIntegerArg;
				}
			}
			else if (Conversion == (CharType)'z')
			{
				if (!IsIntegerConversion(Next))
				{
					Fault = E::ZNeedsIntegerSpec;
				}
				else
				{
					++At;
					Fault = bIntegerLike ? E::Ok : E::LengthModifierNeedsIntegerArg;
				}
			}
			else if (Conversion == (CharType)'l')
			{
				if (Next == (CharType)'l')
				{
					++At;
					if (!IsIntegerConversion(*At))
					{
						Fault = E::LLNeedsIntegerSpec;
					}
					else
					{
						++At;
						Fault = bIntegerLike || Arg.bPointer ? E::Ok : E::LengthModifierNeedsIntegerArg;
					}
				}
				else if (Next == (CharType)'f')
				{
					++At;
					Fault = Arg.bFloatOrDouble ? E::Ok : E::FNeedsFloatOrDoubleArg;
				}
				else if (IsIntegerConversion(Next))
				{
					++At;
					Fault = bIntegerLike ? E::Ok : E::LengthModifierNeedsIntegerArg;
				}
				else
				{
					Fault = E::InvalidFormatSpec;
				}
			}
			else if (Conversion == (CharType)'h')
			{
				if (Next == (CharType)'h')
				{
					++At;
					if (!IsIntegerConversion(*At))
					{
						Fault = E::HHNeedsIntegerSpec;
					}
					else
					{
						++At;
						Fault = bIntegerLike ? E::Ok : E::LengthModifierNeedsIntegerArg;
					}
				}
				else if (IsIntegerConversion(Next))
				{
					++At;
					Fault = bIntegerLike ? E::Ok : E::LengthModifierNeedsIntegerArg;
				}
				else
				{
					Fault = E::InvalidFormatSpec;
				}
			}
			else if (Conversion == (CharType)'I')
			{
				if (At[0] == (CharType)'6' && At[1] == (CharType)'4' && IsIntegerConversion(At[2]))
				{
					At += 3;
					Fault = bIntegerLike ? E::Ok : E::LengthModifierNeedsIntegerArg;
				}
				else
				{
					Fault = E::I64BadSpec;
				}
			}
			else if (Conversion == (CharType)'f' || Conversion == (CharType)'e' || Conversion == (CharType)'g')
			{
				Fault = Arg.bFloatOrDouble ? E::Ok : E::FNeedsFloatOrDoubleArg;
			}
			else if (Conversion == (CharType)'p')
			{
				Fault = Arg.bPointer ? E::Ok : E::PNeedsPointerArg;
			}
			else
			{
				Fault = E::InvalidFormatSpec;
			}
			if (Fault != E::Ok)
			{
				return FResult{ Fault, ArgPos };
			}
			++ArgPos;
		}
	}

	template <typename CharType, typename... ArgTypes>
	constexpr FResult CheckFormatFor(const CharType* Format)
	{
		constexpr int NumArgs = (int)sizeof...(ArgTypes);
		const FArgKind Kinds[NumArgs + 1] = { MakeArgKind<std::decay_t<ArgTypes>>()..., FArgKind() };
		return CheckFormat(Format, Kinds, NumArgs);
	}

	// The faults, each an ordinary function so that calling it from the consteval constructor is what stops
	// the compilation; its name is the message.
	namespace FormatStringError
	{
		inline void MoreArgumentsThanConversions() {}
		inline void NotEnoughArgumentsForTheConversions() {}
		inline void IncompleteConversionOrUnescapedPercent_WritePercentPercent() {}
		inline void UnsupportedConversion() {}
		inline void StarWidthOrPrecisionExpectsAnIntegralArgument() {}
		inline void PercentS_ExpectsADereferencedString_WriteStarBeforeTheFString() {}
		inline void PercentS_ExpectsACharacterPointerButGotACharacter() {}
		inline void PercentS_ExpectsACharacterPointer() {}
		inline void PercentS_ExpectsATCHARPointer_UsePercentHS_ForANSICHARorUTF8CHAR() {}
		inline void PercentLS_ExpectsATCHARPointer() {}
		inline void PercentHS_ExpectsAnANSICHARorUTF8CHARPointer() {}
		inline void PercentCapitalS_ExpectsAPointerToCharactersOfTheOtherWidth() {}
		inline void PercentC_ExpectsACharacter() {}
		inline void PercentD_ExpectsAnIntegralArgument() {}
		inline void PercentZ_MustBeFollowedBy_d_i_u_x_X() {}
		inline void PercentLL_MustBeFollowedBy_d_i_u_x_X() {}
		inline void PercentHH_MustBeFollowedBy_d_i_u_x_X() {}
		inline void LengthModifiedIntegerConversionExpectsAnIntegralArgument() {}
		inline void PercentI_MustBeWrittenPercentI64_FollowedBy_d_i_u_x_X() {}
		inline void PercentP_ExpectsAPointer() {}
		inline void PercentF_ExpectsAFloatOrDouble() {}
	}

	constexpr void ReportFault(EFormatStringSanStatus Status)
	{
		using E = EFormatStringSanStatus;
		switch (Status)
		{
		case E::Ok:
			break;
		case E::NotEnoughSpecifiers:
			FormatStringError::MoreArgumentsThanConversions();
			break;
		case E::NotEnoughArguments:
			FormatStringError::NotEnoughArgumentsForTheConversions();
			break;
		case E::IncompleteFormatSpecifierOrUnescapedPercent:
			FormatStringError::IncompleteConversionOrUnescapedPercent_WritePercentPercent();
			break;
		case E::InvalidFormatSpec:
			FormatStringError::UnsupportedConversion();
			break;
		case E::DynamicLengthSpecNeedsIntegerArg:
			FormatStringError::StarWidthOrPrecisionExpectsAnIntegralArgument();
			break;
		case E::SNeedsDereferencedString:
			FormatStringError::PercentS_ExpectsADereferencedString_WriteStarBeforeTheFString();
			break;
		case E::SNeedsPtrButGotChar:
			FormatStringError::PercentS_ExpectsACharacterPointerButGotACharacter();
			break;
		case E::SNeedsCharPtrArg:
			FormatStringError::PercentS_ExpectsACharacterPointer();
			break;
		case E::SNeedsCharPtrArgOfFormatWidth:
			FormatStringError::PercentS_ExpectsATCHARPointer_UsePercentHS_ForANSICHARorUTF8CHAR();
			break;
		case E::LSNeedsWideCharPtrArg:
			FormatStringError::PercentLS_ExpectsATCHARPointer();
			break;
		case E::HSNeedsNarrowCharPtrArg:
			FormatStringError::PercentHS_ExpectsAnANSICHARorUTF8CHARPointer();
			break;
		case E::CapitalSNeedsCharPtrArgOfOtherWidth:
			FormatStringError::PercentCapitalS_ExpectsAPointerToCharactersOfTheOtherWidth();
			break;
		case E::CNeedsCharArg:
			FormatStringError::PercentC_ExpectsACharacter();
			break;
		case E::DNeedsIntegerArg:
			FormatStringError::PercentD_ExpectsAnIntegralArgument();
			break;
		case E::ZNeedsIntegerSpec:
			FormatStringError::PercentZ_MustBeFollowedBy_d_i_u_x_X();
			break;
		case E::LLNeedsIntegerSpec:
			FormatStringError::PercentLL_MustBeFollowedBy_d_i_u_x_X();
			break;
		case E::HHNeedsIntegerSpec:
			FormatStringError::PercentHH_MustBeFollowedBy_d_i_u_x_X();
			break;
		case E::LengthModifierNeedsIntegerArg:
			FormatStringError::LengthModifiedIntegerConversionExpectsAnIntegralArgument();
			break;
		case E::I64BadSpec:
			FormatStringError::PercentI_MustBeWrittenPercentI64_FollowedBy_d_i_u_x_X();
			break;
		case E::PNeedsPointerArg:
			FormatStringError::PercentP_ExpectsAPointer();
			break;
		case E::FNeedsFloatOrDoubleArg:
			FormatStringError::PercentF_ExpectsAFloatOrDouble();
			break;
		}
	}

	template <typename CharType, typename... ArgTypes>
	struct TCheckedFormatStringPrivate
	{
		template <int32 N>
		consteval TCheckedFormatStringPrivate(const CharType (&Fmt)[N])
			: FormatString(Fmt)
		{
			ReportFault(CheckFormatFor<CharType, ArgTypes...>(Fmt).Status);
		}

		const CharType* FormatString;
	};

	template <EFormatStringSanStatus Status, int ArgPos>
	constexpr void AssertFormatStatus()
	{
		static_assert(Status == EFormatStringSanStatus::Ok, "the format string does not fit its arguments (see the status and argument position above)");
	}

	template <typename CharType, typename... ArgTypes>
	struct TFormatChecker
	{
		static constexpr FResult Check(const CharType* Format)
		{
			return CheckFormatFor<CharType, ArgTypes...>(Format);
		}
	};

	// Only named in decltype: the checker for a format and the (decayed) types of its arguments.
	template <typename CharType, typename... ArgTypes>
	TFormatChecker<CharType, std::decay_t<ArgTypes>...> GetFmtArgCheckerType(const CharType* Format, ArgTypes&&... Args);
}

namespace UE::Core
{
	// The format parameter of a checked printf-style function: built only from a character array whose
	// conversions fit ArgTypes (which are not deduced from it).
	template <typename FmtType, typename... ArgTypes>
	using TCheckedFormatString = ::UE::Core::Private::FormatStringSan::TCheckedFormatStringPrivate<FmtType, TIdentity_T<ArgTypes>...>;
}

// Checks a format string literal against the arguments that follow it; the arguments are not evaluated.
#define UE_CHECK_FORMAT_STRING(Fmt, ...) \
	do \
	{ \
		using UE_FormatChecker = decltype(::UE::Core::Private::FormatStringSan::GetFmtArgCheckerType(Fmt, ##__VA_ARGS__)); \
		constexpr ::UE::Core::Private::FormatStringSan::FResult UE_FormatResult = UE_FormatChecker::Check(Fmt); \
		::UE::Core::Private::FormatStringSan::AssertFormatStatus<UE_FormatResult.Status, UE_FormatResult.ArgPos>(); \
	} while (false)
