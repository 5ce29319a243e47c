// The editor build treats a declaration that hides another as an error (MSVC C4456 to C4459, raised to
// errors by UnrealBuildTool). GCC's -Wshadow catches locals that hide locals, parameters and members, but
// not a local or parameter that hides a variable or an enumerator of an enclosing namespace (C4459), nor an
// enumerator of an enclosing class (C4458). This program parses one translation unit with libclang, as
// the build compiled it (from compile_commands.json), and reports both kinds for the declarations in the
// files under a source folder, together with clang's own errors and -Wshadow warnings there.
//
//   ShadowVariableCheck BUILD_DIR SOURCE_FILE SOURCE_FOLDER
//
// Exit status: 0 when nothing is hidden, 1 with one line per fault, 2 when the unit cannot be parsed.
#include <clang-c/CXCompilationDatabase.h>
#include <clang-c/Index.h>

#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace
{
	std::string ToString(CXString Text)
	{
		const char* Chars = clang_getCString(Text);
		std::string Result = Chars ? Chars : "";
		clang_disposeString(Text);
		return Result;
	}

	struct FPlace
	{
		std::string File;
		unsigned Line = 0;
		unsigned Column = 0;
	};

	FPlace PlaceOf(CXSourceLocation Location)
	{
		CXFile File = nullptr;
		FPlace Place;
		clang_getSpellingLocation(Location, &File, &Place.Line, &Place.Column, nullptr);
		Place.File = File ? ToString(clang_getFileName(File)) : std::string();
		return Place;
	}

	bool IsUnder(const std::string& Path, const std::string& Folder)
	{
		return Path.size() > Folder.size() && Path.compare(0, Folder.size(), Folder) == 0 && Path[Folder.size()] == '/';
	}

	// Anonymous and inline namespaces are part of the namespace around them, for lookup as for hiding.
	CXCursor EffectiveScope(CXCursor Scope)
	{
		while (clang_getCursorKind(Scope) == CXCursor_Namespace
			&& (ToString(clang_getCursorSpelling(Scope)).empty() || clang_Cursor_isInlineNamespace(Scope)))
		{
			Scope = clang_getCursorSemanticParent(Scope);
		}
		return Scope;
	}

	std::string ScopeKey(CXCursor Scope)
	{
		Scope = EffectiveScope(Scope);
		return clang_getCursorKind(Scope) == CXCursor_TranslationUnit ? std::string("::") : ToString(clang_getCursorUSR(Scope));
	}

	bool IsClassKind(CXCursorKind Kind)
	{
		return Kind == CXCursor_ClassDecl || Kind == CXCursor_StructDecl || Kind == CXCursor_ClassTemplate
			|| Kind == CXCursor_ClassTemplatePartialSpecialization || Kind == CXCursor_UnionDecl;
	}

	bool IsFunctionKind(CXCursorKind Kind)
	{
		return Kind == CXCursor_FunctionDecl || Kind == CXCursor_CXXMethod || Kind == CXCursor_Constructor || Kind == CXCursor_Destructor
			|| Kind == CXCursor_ConversionFunction || Kind == CXCursor_FunctionTemplate || Kind == CXCursor_LambdaExpr;
	}

	struct FScopedName
	{
		std::string Kind;
		FPlace Place;
	};

	// Names declared at namespace scope (variables and unscoped enumerators) and enumerators of class scope,
	// by the scope they belong to.
	struct FScopeIndex
	{
		std::map<std::string, std::map<std::string, FScopedName>> Names;
	};

	CXChildVisitResult IndexScopes(CXCursor Cursor, CXCursor Parent, CXClientData Data)
	{
		FScopeIndex& Index = *static_cast<FScopeIndex*>(Data);
		const CXCursorKind Kind = clang_getCursorKind(Cursor);
		if (Kind == CXCursor_VarDecl)
		{
			const CXCursor Scope = clang_getCursorSemanticParent(Cursor);
			const CXCursorKind ScopeKind = clang_getCursorKind(Scope);
			if (ScopeKind == CXCursor_Namespace || ScopeKind == CXCursor_TranslationUnit)
			{
				Index.Names[ScopeKey(Scope)].emplace(ToString(clang_getCursorSpelling(Cursor)),
					FScopedName{ "variable", PlaceOf(clang_getCursorLocation(Cursor)) });
			}
			return CXChildVisit_Continue;
		}
		if (Kind == CXCursor_EnumConstantDecl)
		{
			const CXCursor Enum = clang_getCursorSemanticParent(Cursor);
			if (!clang_EnumDecl_isScoped(Enum))
			{
				const CXCursor Scope = clang_getCursorSemanticParent(Enum);
				const CXCursorKind ScopeKind = clang_getCursorKind(Scope);
				if (ScopeKind == CXCursor_Namespace || ScopeKind == CXCursor_TranslationUnit || IsClassKind(ScopeKind))
				{
					Index.Names[ScopeKey(Scope)].emplace(ToString(clang_getCursorSpelling(Cursor)),
						FScopedName{ "enumerator", PlaceOf(clang_getCursorLocation(Cursor)) });
				}
			}
			return CXChildVisit_Continue;
		}
		if (IsFunctionKind(Kind))
		{
			// Nothing inside a function is at namespace scope.
			return CXChildVisit_Continue;
		}
		return CXChildVisit_Recurse;
	}

	struct FCheck
	{
		const FScopeIndex* Index = nullptr;
		std::string SourceFolder;
		std::set<std::string> Faults;
	};

	// A local variable or parameter in the source folder that has the name of a variable or enumerator of an
	// enclosing namespace, or of an enumerator of an enclosing class.
	void CheckDeclaration(FCheck& Check, CXCursor Cursor)
	{
		const FPlace Place = PlaceOf(clang_getCursorLocation(Cursor));
		if (!IsUnder(Place.File, Check.SourceFolder))
		{
			return;
		}
		const std::string Name = ToString(clang_getCursorSpelling(Cursor));
		if (Name.empty())
		{
			return;
		}
		// A parameter hides nothing until its function has a body.
		if (clang_getCursorKind(Cursor) == CXCursor_ParmDecl && !clang_isCursorDefinition(clang_getCursorSemanticParent(Cursor)))
		{
			return;
		}
		bool bInFunction = false;
		for (CXCursor Scope = clang_getCursorSemanticParent(Cursor); !clang_Cursor_isNull(Scope) && clang_getCursorKind(Scope) != CXCursor_TranslationUnit;
			 Scope = clang_getCursorSemanticParent(Scope))
		{
			const CXCursorKind ScopeKind = clang_getCursorKind(Scope);
			if (IsFunctionKind(ScopeKind))
			{
				bInFunction = true;
				continue;
			}
			if (!bInFunction || (ScopeKind != CXCursor_Namespace && !IsClassKind(ScopeKind)) || ScopeKey(Scope) == "::")
			{
				continue;
			}
			const auto Names = Check.Index->Names.find(ScopeKey(Scope));
			if (Names == Check.Index->Names.end())
			{
				continue;
			}
			const auto Hidden = Names->second.find(Name);
			if (Hidden != Names->second.end() && (ScopeKind == CXCursor_Namespace || Hidden->second.Kind == "enumerator"))
			{
				Check.Faults.insert(Place.File + ":" + std::to_string(Place.Line) + ":" + std::to_string(Place.Column) + ": error: declaration of '" + Name
					+ "' hides the " + Hidden->second.Kind + " declared at " + Hidden->second.Place.File + ":" + std::to_string(Hidden->second.Place.Line)
					+ (ScopeKind == CXCursor_Namespace ? " (MSVC C4459" : " (MSVC C4458") + ", an error in the editor build)");
			}
		}
		if (!bInFunction)
		{
			return;
		}
		// The global namespace encloses everything.
		const auto Globals = Check.Index->Names.find("::");
		if (Globals != Check.Index->Names.end())
		{
			const auto Hidden = Globals->second.find(Name);
			if (Hidden != Globals->second.end())
			{
				Check.Faults.insert(Place.File + ":" + std::to_string(Place.Line) + ":" + std::to_string(Place.Column) + ": error: declaration of '" + Name
					+ "' hides the global " + Hidden->second.Kind + " declared at " + Hidden->second.Place.File + ":"
					+ std::to_string(Hidden->second.Place.Line) + " (MSVC C4459, an error in the editor build)");
			}
		}
	}

	CXChildVisitResult VisitDeclarations(CXCursor Cursor, CXCursor Parent, CXClientData Data)
	{
		const CXCursorKind Kind = clang_getCursorKind(Cursor);
		if (Kind == CXCursor_VarDecl || Kind == CXCursor_ParmDecl)
		{
			CheckDeclaration(*static_cast<FCheck*>(Data), Cursor);
		}
		return CXChildVisit_Recurse;
	}

	// The arguments the build compiled SourceFile with, without the compiler, the output and the file itself.
	bool ReadCompileArguments(const std::string& BuildDir, const std::string& SourceFile, std::vector<std::string>& OutArguments)
	{
		CXCompilationDatabase_Error Error = CXCompilationDatabase_NoError;
		CXCompilationDatabase Database = clang_CompilationDatabase_fromDirectory(BuildDir.c_str(), &Error);
		if (Error != CXCompilationDatabase_NoError)
		{
			return false;
		}
		CXCompileCommands Commands = clang_CompilationDatabase_getCompileCommands(Database, SourceFile.c_str());
		const bool bFound = clang_CompileCommands_getSize(Commands) > 0;
		if (bFound)
		{
			CXCompileCommand Command = clang_CompileCommands_getCommand(Commands, 0);
			const unsigned Count = clang_CompileCommand_getNumArgs(Command);
			for (unsigned Index = 1; Index < Count; ++Index)
			{
				const std::string Argument = ToString(clang_CompileCommand_getArg(Command, Index));
				if (Argument == "-o" || Argument == "-MF" || Argument == "-MT")
				{
					++Index;
					continue;
				}
				if (Argument == "-c" || Argument == "-MD" || Argument == SourceFile)
				{
					continue;
				}
				OutArguments.push_back(Argument);
			}
		}
		clang_CompileCommands_dispose(Commands);
		clang_CompilationDatabase_dispose(Database);
		return bFound;
	}
}

int main(int ArgumentCount, char** Arguments)
{
	if (ArgumentCount != 4)
	{
		std::fprintf(stderr, "usage: ShadowVariableCheck BUILD_DIR SOURCE_FILE SOURCE_FOLDER\n");
		return 2;
	}
	const std::string BuildDir = Arguments[1];
	const std::string SourceFile = Arguments[2];
	FCheck Check;
	Check.SourceFolder = Arguments[3];
	while (!Check.SourceFolder.empty() && Check.SourceFolder.back() == '/')
	{
		Check.SourceFolder.pop_back();
	}

	std::vector<std::string> CompileArguments;
	if (!ReadCompileArguments(BuildDir, SourceFile, CompileArguments))
	{
		std::fprintf(stderr, "ShadowVariableCheck: %s is not in %s/compile_commands.json\n", SourceFile.c_str(), BuildDir.c_str());
		return 2;
	}
	// Only clang's own shadowing warnings are asked for: the build's compiler judges everything else.
	CompileArguments.push_back("-Wno-everything");
	CompileArguments.push_back("-Wshadow");
	std::vector<const char*> ArgumentPointers;
	for (const std::string& Argument : CompileArguments)
	{
		ArgumentPointers.push_back(Argument.c_str());
	}

	CXIndex ClangIndex = clang_createIndex(0, 0);
	CXTranslationUnit Unit = nullptr;
	const CXErrorCode Parsed = clang_parseTranslationUnit2(ClangIndex, SourceFile.c_str(), ArgumentPointers.data(), (int)ArgumentPointers.size(), nullptr, 0,
		CXTranslationUnit_None, &Unit);
	if (Parsed != CXError_Success || !Unit)
	{
		std::fprintf(stderr, "ShadowVariableCheck: clang could not parse %s\n", SourceFile.c_str());
		clang_disposeIndex(ClangIndex);
		return 2;
	}

	std::set<std::string> ClangFaults;
	for (unsigned Index = 0; Index < clang_getNumDiagnostics(Unit); ++Index)
	{
		CXDiagnostic Diagnostic = clang_getDiagnostic(Unit, Index);
		const CXDiagnosticSeverity Severity = clang_getDiagnosticSeverity(Diagnostic);
		const FPlace Place = PlaceOf(clang_getDiagnosticLocation(Diagnostic));
		if (Severity >= CXDiagnostic_Warning && IsUnder(Place.File, Check.SourceFolder))
		{
			ClangFaults.insert(ToString(clang_formatDiagnostic(Diagnostic, clang_defaultDiagnosticDisplayOptions())));
		}
		clang_disposeDiagnostic(Diagnostic);
	}

	FScopeIndex ScopeIndex;
	const CXCursor Root = clang_getTranslationUnitCursor(Unit);
	clang_visitChildren(Root, &IndexScopes, &ScopeIndex);
	Check.Index = &ScopeIndex;
	clang_visitChildren(Root, &VisitDeclarations, &Check);

	for (const std::string& Fault : ClangFaults)
	{
		std::printf("%s\n", Fault.c_str());
	}
	for (const std::string& Fault : Check.Faults)
	{
		std::printf("%s\n", Fault.c_str());
	}
	clang_disposeTranslationUnit(Unit);
	clang_disposeIndex(ClangIndex);
	return ClangFaults.empty() && Check.Faults.empty() ? 0 : 1;
}
