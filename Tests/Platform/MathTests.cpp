// Rotators, quaternions and the vectorised transform layout.
#include "PlatformTestUtils.h"

#include "Headless/YUpFrame.h"
#include "Math/Quat.h"
#include "Math/Rotator.h"
#include "Math/TransformVectorized.h"
#include "Math/UnrealMathUtility.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace
{
	const double Half = std::sqrt(0.5);

	void ExpectQuat(const FQuat& Actual, double X, double Y, double Z, double W)
	{
		EXPECT_NEAR(Actual.X, X, 1e-6);
		EXPECT_NEAR(Actual.Y, Y, 1e-6);
		EXPECT_NEAR(Actual.Z, Z, 1e-6);
		EXPECT_NEAR(Actual.W, W, 1e-6);
	}

	void ExpectVector(const FVector& Actual, double X, double Y, double Z, double Tolerance = 1e-6)
	{
		EXPECT_NEAR(Actual.X, X, Tolerance);
		EXPECT_NEAR(Actual.Y, Y, Tolerance);
		EXPECT_NEAR(Actual.Z, Z, Tolerance);
	}

	// The transform's twelve lanes as they lie in memory.
	void ReadLanes(const FTransform& Transform, double (&Lanes)[12])
	{
		std::memcpy(Lanes, &Transform, sizeof(Lanes));
	}

	void WriteLane(FTransform& Transform, int32 Lane, double Value)
	{
		std::memcpy(reinterpret_cast<double*>(&Transform) + Lane, &Value, sizeof(double));
	}
}

TEST(Math, FiniteAndNaNChecks)
{
	const double Inf = std::numeric_limits<double>::infinity();
	const double NaN = std::numeric_limits<double>::quiet_NaN();
	EXPECT_TRUE(FMath::IsNaN(NaN) && FMath::IsNaN(-NaN) && FMath::IsNaN(std::numeric_limits<float>::quiet_NaN()));
	EXPECT_FALSE(FMath::IsNaN(Inf) || FMath::IsNaN(-0.0f));
	EXPECT_FALSE(FMath::IsFinite(Inf) || FMath::IsFinite(-Inf) || FMath::IsFinite(NaN) || FMath::IsFinite(std::numeric_limits<float>::infinity()));
	EXPECT_TRUE(FMath::IsFinite(std::numeric_limits<double>::max()) && FMath::IsFinite(std::numeric_limits<double>::denorm_min()));
	EXPECT_TRUE(FMath::IsFinite(std::numeric_limits<float>::max()));
}

TEST(Math, RotatorToQuaternionUsesTheEngineConventions)
{
	ExpectQuat(FRotator(90, 0, 0).Quaternion(), 0, -Half, 0, Half);
	ExpectQuat(FRotator(0, 90, 0).Quaternion(), 0, 0, Half, Half);
	ExpectQuat(FRotator(0, 0, 90).Quaternion(), -Half, 0, 0, Half);
	ExpectQuat(FRotator(0, 0, 0).Quaternion(), 0, 0, 0, 1);

	// The modulo truncates and keeps the sign: 370 and 730 give the very quaternion of 10, while -350
	// (the same rotation) gives its negation.
	const FQuat Ten = FRotator(0, 10, 0).Quaternion();
	for (const double Yaw : { 370.0, 730.0 })
	{
		const FQuat Wound = FRotator(0, Yaw, 0).Quaternion();
		ExpectQuat(Wound, Ten.X, Ten.Y, Ten.Z, Ten.W);
	}
	ExpectQuat(FRotator(0, -350, 0).Quaternion(), -Ten.X, -Ten.Y, -Ten.Z, -Ten.W);
	const FQuat MinusTen = FRotator(0, -10, 0).Quaternion();
	ExpectQuat(FRotator(0, -370, 0).Quaternion(), MinusTen.X, MinusTen.Y, MinusTen.Z, MinusTen.W);

	// Yaw turns forward towards +Y, pitch lifts it towards +Z, roll lowers the right side (+Y to -Z).
	ExpectVector(FRotator(0, 90, 0).Quaternion().RotateVector(FVector(1, 0, 0)), 0, 1, 0);
	ExpectVector(FRotator(90, 0, 0).Quaternion().RotateVector(FVector(1, 0, 0)), 0, 0, 1);
	ExpectVector(FRotator(0, 0, 90).Quaternion().RotateVector(FVector(0, 1, 0)), 0, 0, -1);
	const double P = 30;
	const double Y = 50;
	const FVector Forward = FRotator(P, Y, 70).Quaternion().RotateVector(FVector(1, 0, 0));
	const double ToRad = UE_DOUBLE_PI / 180.0;
	ExpectVector(Forward, std::cos(P * ToRad) * std::cos(Y * ToRad), std::cos(P * ToRad) * std::sin(Y * ToRad), std::sin(P * ToRad));

}

TEST(Math, QuaternionToRotatorRoundTrips)
{
	const FRotator Cases[] = { FRotator(10, 20, 30), FRotator(-45, 170, -120), FRotator(89, -179, 5), FRotator(-89.5, 0, 179.5), FRotator(0, 0, 0) };
	for (const FRotator& Case : Cases)
	{
		const FRotator Back = Case.Quaternion().Rotator();
		EXPECT_NEAR(Back.Pitch, Case.Pitch, 1e-3);
		EXPECT_NEAR(Back.Yaw, Case.Yaw, 1e-3);
		EXPECT_NEAR(Back.Roll, Case.Roll, 1e-3);
		// -q is the same rotation.
		const FQuat Q = Case.Quaternion();
		EXPECT_TRUE(FQuat(-Q.X, -Q.Y, -Q.Z, -Q.W).Rotator().Equals(Back, 1e-3));
	}

	// Wound angles come back in the natural ranges.
	const FRotator Wound = FRotator(30, 370, -200).Quaternion().Rotator();
	EXPECT_NEAR(Wound.Pitch, 30, 1e-3);
	EXPECT_NEAR(Wound.Yaw, 10, 1e-3);
	EXPECT_NEAR(Wound.Roll, 160, 1e-3);

	// At the poles only the orientation is defined; yaw and roll may trade.
	for (const double Pitch : { 90.0, -90.0 })
	{
		const FQuat Pole = FRotator(Pitch, 30, 20).Quaternion();
		const FRotator AtPole = Pole.Rotator();
		EXPECT_EQ(AtPole.Pitch, Pitch);
		EXPECT_TRUE(AtPole.Quaternion().Equals(Pole, 1e-6));
		EXPECT_FALSE(AtPole.ContainsNaN());
	}
}

TEST(Math, EulerHelpersAndAxisNormalisation)
{
	const FRotator FromEuler = FRotator::MakeFromEuler(FVector(10, 20, 30));
	EXPECT_EQ(FromEuler.Roll, 10);
	EXPECT_EQ(FromEuler.Pitch, 20);
	EXPECT_EQ(FromEuler.Yaw, 30);
	ExpectVector(FromEuler.Euler(), 10, 20, 30, 0);
	ExpectVector(FQuat::MakeFromEuler(FVector(10, 20, 30)).Euler(), 10, 20, 30, 1e-3);

	EXPECT_EQ(FRotator::ClampAxis(-10), 350);
	EXPECT_EQ(FRotator::ClampAxis(360), 0);
	EXPECT_EQ(FRotator::ClampAxis(725), 5);
	EXPECT_EQ(FRotator::NormalizeAxis(180), 180);
	EXPECT_EQ(FRotator::NormalizeAxis(-180), 180);
	EXPECT_EQ(FRotator::NormalizeAxis(540), 180);
	EXPECT_EQ(FRotator::NormalizeAxis(190), -170);
	EXPECT_EQ(FRotator::NormalizeAxis(-190), 170);
	EXPECT_TRUE(FRotator(0, 359.99999, 0).Equals(FRotator(0, -0.00001, 0), 1e-4));
}

TEST(Math, TransformLanesAndNaNDetection)
{
	static_assert(sizeof(FTransform) == 96 && sizeof(FTransform3f) == 48);
	const FTransform Transform(FQuat(0, 0, Half, Half), FVector(1, 2, 3), FVector(4, 5, 6));
	double Lanes[12];
	ReadLanes(Transform, Lanes);
	const double Expected[12] = { 0, 0, Half, Half, 1, 2, 3, 0, 4, 5, 6, 0 };
	for (int32 Lane = 0; Lane < 12; ++Lane)
	{
		EXPECT_EQ(Lanes[Lane], Expected[Lane]) << "lane " << Lane;
	}
	ReadLanes(FTransform::Identity, Lanes);
	const double Identity[12] = { 0, 0, 0, 1, 0, 0, 0, 0, 1, 1, 1, 0 };
	EXPECT_EQ(std::memcmp(Lanes, Identity, sizeof(Lanes)), 0);

	// Every lane counts, the unused fourth lanes of translation and scale included.
	EXPECT_FALSE(Transform.ContainsNaN());
	for (int32 Lane = 0; Lane < 12; ++Lane)
	{
		for (const double Bad : { std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity() })
		{
			FTransform Damaged = Transform;
			WriteLane(Damaged, Lane, Bad);
			EXPECT_TRUE(Damaged.ContainsNaN()) << "lane " << Lane;
			EXPECT_FALSE(Damaged.IsValid()) << "lane " << Lane;
		}
	}
	EXPECT_TRUE(Transform.IsValid());
	EXPECT_FALSE(FTransform(FQuat(0, 0, 0, 2), FVector(0, 0, 0)).IsValid());

	// Scale first, then rotation, then translation.
	ExpectVector(Transform.TransformPosition(FVector(1, 0, 0)), 1, 6, 3);
	EXPECT_TRUE(Transform.Equals(FTransform(FQuat(0, 0, -Half, -Half), FVector(1, 2, 3), FVector(4, 5, 6))));
	EXPECT_FALSE(Transform.Equals(FTransform(FQuat(0, 0, Half, Half), FVector(1, 2, 3.01), FVector(4, 5, 6))));

	// Single precision converts lane by lane; the fourth lanes travel as they are, whatever they hold.
	FTransform Source(FQuat(0.1, 0.2, 0.3, 0.9), FVector(1.0 / 3.0, 1e10, -2.5), FVector(0.5, 1, 2));
	WriteLane(Source, 7, 7.25);
	WriteLane(Source, 11, std::numeric_limits<double>::infinity());
	ReadLanes(Source, Lanes);
	const FTransform3f Converted(Source);
	float Singles[12];
	std::memcpy(Singles, &Converted, sizeof(Singles));
	for (int32 Lane = 0; Lane < 12; ++Lane)
	{
		EXPECT_EQ(Singles[Lane], (float)Lanes[Lane]) << "lane " << Lane;
	}
	EXPECT_TRUE(Converted.ContainsNaN());
	EXPECT_TRUE(FTransform(FTransform3f(Transform)).Equals(Transform, 1e-6));
}

// The Y-up frame must not mirror the scene: rotating in the engine and then changing frame equals changing
// frame and then rotating there, a point one metre to the engine's right (+Y) lies on glTF's +Z, and up stays up.
TEST(Math, YUpFrameKeepsRotationsAndDoesNotMirror)
{
	using namespace UE::Headless;
	EXPECT_EQ(ToYUpPoint(FVector3f(100.0f, 200.0f, 300.0f)), FVector3f(1.0f, 3.0f, 2.0f));
	EXPECT_EQ(FromYUpPoint(FVector3f(1.0f, 3.0f, 2.0f)), FVector3f(100.0f, 200.0f, 300.0f));
	EXPECT_EQ(SwapYUpAxes(FVector3f(1.0f, 2.0f, 3.0f)), FVector3f(1.0f, 3.0f, 2.0f));

	const FQuat4f Rotation(FVector3f(0.3f, -0.5f, 0.8f).GetSafeNormal(), 1.1f);
	const FQuat4f Converted = SwapYUpRotation(Rotation);
	for (const FVector3f& Vector : { FVector3f(1.0f, 0.0f, 0.0f), FVector3f(0.0f, 1.0f, 0.0f), FVector3f(0.2f, -3.0f, 5.0f) })
	{
		const FVector3f Expected = SwapYUpAxes(Rotation.RotateVector(Vector));
		EXPECT_TRUE(Converted.RotateVector(SwapYUpAxes(Vector)).Equals(Expected, 1e-5f));
	}
	EXPECT_EQ(SwapYUpRotation(Converted), Rotation);

	// Yaw of 90 degrees turns forward (+X) to the engine's right (+Y); in glTF that is +X to +Z, a turn of
	// -90 degrees about +Y, as right-handed maths has it.
	const FQuat4f Yaw(FVector3f(0.0f, 0.0f, 1.0f), UE_HALF_PI);
	EXPECT_TRUE(SwapYUpRotation(Yaw).RotateVector(FVector3f(1.0f, 0.0f, 0.0f)).Equals(FVector3f(0.0f, 0.0f, 1.0f), 1e-6f));
}
