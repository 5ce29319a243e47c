// The build's definitions hold before a file's first #include, as UnrealBuildTool passes them on the command line:
// a file that tests one of them first sees the editor's value, not a default.
#if !defined(UE_BUILD_DEVELOPMENT) || UE_BUILD_DEVELOPMENT != 1 || !defined(UE_EDITOR) || UE_EDITOR != 1
#error "the Development Editor configuration is not defined on the command line"
#endif
#if !defined(WITH_EDITOR) || WITH_EDITOR != 1 || !defined(WITH_EDITORONLY_DATA) || WITH_EDITORONLY_DATA != 1 || !defined(WITH_ENGINE) || WITH_ENGINE != 1
#error "the editor's WITH_ definitions are not on the command line"
#endif
#if !defined(WITH_DEV_AUTOMATION_TESTS) || WITH_DEV_AUTOMATION_TESTS != 1 || !defined(IS_MONOLITHIC) || IS_MONOLITHIC != 0 || !defined(IS_PROGRAM) || IS_PROGRAM != 0
#error "the automation test and linkage definitions are not on the command line"
#endif
// Every module this file's target depends on hands its API macro on; the host's among them.
#if !defined(CORE_API) || !defined(COREUOBJECT_API) || !defined(ENGINE_API) || !defined(CORVANEAI_API) || !defined(UNREALED_API)
#error "a module's API macro is not on the command line"
#endif

#include "CoreMinimal.h"

#include <gtest/gtest.h>

namespace
{
	// Derived in the engine's headers from the definitions above: the automation tests of a Development Editor.
	TEST(BuildDefinitions, AutomationTestsAreCompiledIn)
	{
		EXPECT_EQ(WITH_AUTOMATION_TESTS, 1);
	}
}
