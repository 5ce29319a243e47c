// A fixture for tests that drive a started project through one host session; a fault a test armed and left
// unused ends with the test.
#pragma once

#include "Headless/Faults.h"
#include "TestProject.h"

#include <gtest/gtest.h>

#include <memory>

class FSessionTest : public ::testing::Test
{
protected:
	void SetUp() override
	{
		ASSERT_TRUE(Project.Start());
		Session = std::make_unique<FTestSession>(Project);
	}

	void TearDown() override
	{
		UE::Headless::ClearFaults();
	}

	FTestProject Project;
	std::unique_ptr<FTestSession> Session;
};
