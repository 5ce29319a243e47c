// The headless table checks every call's arguments against the function's description before its body runs,
// and a wrong one is an error that names the function as a script calls it, the argument and the type it must
// have; arguments that fit still do what they did.
#include "SessionTest.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
	class HarnessArgumentTest : public FSessionTest
	{
	protected:
		// The message of the error that calling the function with the arguments raises, or "no error". The function is
		// called by pcall itself, so that no script line is put before the message.
		std::string ErrorOf(const std::string& Call)
		{
			const size_t Open = Call.find('(');
			const std::string Function = Call.substr(0, Open);
			const std::string Arguments = Call.substr(Open + 1, Call.size() - Open - 2);
			return Session->Eval("(function() local Ok, Message = pcall(" + Function + (Arguments.empty() ? "" : ", " + Arguments) +
				") return Ok and 'no error' or Message end)()");
		}
	};

	TEST_F(HarnessArgumentTest, WrongTypesNameTheFunctionTheArgumentAndTheExpectedType)
	{
		EXPECT_EQ(ErrorOf("headless.set_plugin_enabled(false)"),
			"headless.set_plugin_enabled(name, enabled): argument #1 'name' must be a string, got boolean");
		EXPECT_EQ(ErrorOf("headless.set_plugin_enabled('NaniteAssemblyEditorUtils', 'no')"),
			"headless.set_plugin_enabled(name, enabled): argument #2 'enabled' must be a boolean, got string");
		EXPECT_EQ(ErrorOf("headless.set_plugin_enabled('NaniteAssemblyEditorUtils')"),
			"headless.set_plugin_enabled(name, enabled): argument #2 'enabled' must be a boolean, got no value");
		EXPECT_EQ(ErrorOf("headless.object_info()"), "headless.object_info(path): argument #1 'path' must be a string, got no value");
		EXPECT_EQ(ErrorOf("headless.set_cvar('r.Nanite.AllowAssemblies')"),
			"headless.set_cvar(name, value): argument #2 'value' must be a value, got no value");
		EXPECT_EQ(ErrorOf("headless.fail_next('NewObject', 'why', 'twice')"),
			"headless.fail_next(operation, reason?, skipped_calls?): argument #3 'skipped_calls' must be an integer, got string");
		EXPECT_EQ(ErrorOf("headless.fail_next('NewObject', 'why', 1.5)"),
			"headless.fail_next(operation, reason?, skipped_calls?): argument #3 'skipped_calls' must be an integer, got number");
		EXPECT_EQ(ErrorOf("headless.begin_transaction({})"),
			"headless.begin_transaction(title?): argument #1 'title' must be a string, got table");
		EXPECT_EQ(ErrorOf("headless.save_packages('/Game/A')"),
			"headless.save_packages(packages?): argument #1 'packages' must be a table, got string");
		EXPECT_EQ(ErrorOf("headless.set_editor_available(nil)"),
			"headless.set_editor_available(available): argument #1 'available' must be a boolean, got nil");
	}

	TEST_F(HarnessArgumentTest, TablesInsideArgumentsAreCheckedInTheSameForm)
	{
		EXPECT_EQ(ErrorOf("headless.save_packages({ '/Game/A', 7 })"),
			"headless.save_packages(packages?): argument #1 'packages' entry 2 must be a string, got number");
		EXPECT_EQ(ErrorOf("headless.import_mesh('Box.obj', '/Game/Box', { replace = 'yes' })"),
			"headless.import_mesh(file, dest, options?): argument #3 'options' field 'replace' must be a boolean, got string");
		EXPECT_EQ(ErrorOf("headless.import_mesh('Box.obj', '/Game/Box', { replaces = true })"),
			"headless.import_mesh(file, dest, options?): argument #3 'options' has an unknown key replaces (the only option is replace)");
		EXPECT_EQ(ErrorOf("headless.import_mesh('Box.obj', '/Game/Box', true)"),
			"headless.import_mesh(file, dest, options?): argument #3 'options' must be a table, got boolean");
		EXPECT_EQ(ErrorOf("headless.import_mesh('Box.obj')"),
			"headless.import_mesh(file, dest, options?): argument #2 'dest' must be a string, got no value");
	}

	TEST_F(HarnessArgumentTest, ArgumentsThatFitKeepTheirBehaviour)
	{
		// Optional arguments may be nil, a number passes for a string, and any value (nil too) sets a console variable.
		EXPECT_EQ(ErrorOf("headless.begin_transaction(nil)"), "no error");
		EXPECT_EQ(Session->Eval("headless.transaction_depth()"), "1");
		EXPECT_EQ(ErrorOf("headless.cancel_transaction()"), "no error");
		EXPECT_EQ(Session->Eval("headless.object_info(42)"), "nil");
		EXPECT_EQ(ErrorOf("headless.set_cvar('r.Nanite.AllowAssemblies', false)"), "no error");
		EXPECT_EQ(Session->Eval("headless.get_cvar('r.Nanite.AllowAssemblies')"), "0");
		EXPECT_EQ(ErrorOf("headless.fail_next('NewObject', nil, '2')"), "no error");
		EXPECT_EQ(ErrorOf("headless.set_plugin_enabled('NaniteAssemblyEditorUtils', false)"), "no error");
		EXPECT_EQ(Session->Eval("nanite_assembly_support().plugin_enabled"), "false");
		EXPECT_EQ(ErrorOf("headless.save_packages({})"), "no error");
		EXPECT_EQ(ErrorOf("headless.end_transaction()"), "end_transaction: no transaction is open");
	}
}
