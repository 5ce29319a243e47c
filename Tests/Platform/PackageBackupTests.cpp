// The editor's package backups: the file a save replaces or deletes is kept under Saved/Backup/ in its package's
// folders, never over an earlier backup, and no more than MaxPackageBackups of a package.
#include "PackageFileTestUtils.h"

#include "Headless/PackageBackup.h"
#include "Headless/StaticMeshGeometry.h"

#include <gtest/gtest.h>

#include <regex>

using namespace PackageFileTest;
using PlatformTest::Utf8;

namespace
{
	// The backups in Folder of the package file named Base + ".uasset.json", in name order: the engine's names,
	// Base_YYYY-MM-DD-HH-MM-SS, then _N for the N-th more in the same second.
	std::vector<std::string> BackupsOf(const FString& Folder, const std::string& Base)
	{
		const std::regex Name(Base + R"(_\d{4}-\d\d-\d\d-\d\d-\d\d-\d\d(_\d+)?\.uasset\.json)");
		std::vector<std::string> Backups;
		for (const std::string& File : FilesUnder(Folder))
		{
			if (std::regex_match(File, Name))
			{
				Backups.push_back(File);
			}
		}
		return Backups;
	}

	void SaveAs(UStaticMesh& Mesh, const std::string& SlotName)
	{
		Mesh.GetStaticMaterials().Reset();
		Mesh.GetStaticMaterials().Add(FStaticMaterial(nullptr, FName(*UE::Headless::FromUtf8(SlotName)), NAME_None));
		ASSERT_TRUE(Save({ Mesh.GetPackage() }, false));
	}

	std::string SlotNameIn(const std::string& File)
	{
		const size_t At = File.find("\"slot_name\":\"");
		return At == std::string::npos ? std::string() : File.substr(At + 13, File.find('"', At + 13) - At - 13);
	}
}

TEST(PackageBackup, EachSaveKeepsThePreviousFileAndTheNewestAreKept)
{
	FTestProject Project;
	ASSERT_TRUE(Project.Start());
	const FString Folder = Project.GetDir() + TEXT("/Saved/Backup/Game/Meshes");
	// Files of the folder that are not this package's backups are never removed.
	Project.WriteFile("Saved/Backup/Game/Meshes/SM_Rock_Notes.uasset.json", "notes");
	Project.WriteFile("Saved/Backup/Game/Meshes/SM_Rocky_2020-01-01-00-00-00.uasset.json", "another package");

	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Meshes/SM_Rock"), TEXT("SM_Rock"));
	SaveAs(*Mesh, "V0");
	EXPECT_EQ(BackupsOf(Folder, "SM_Rock"), std::vector<std::string>());
	// Saves within one second do not write over each other's backups.
	const int32 Saves = UE::Headless::MaxPackageBackups + 2;
	for (int32 Version = 1; Version < Saves; ++Version)
	{
		SaveAs(*Mesh, "V" + std::to_string(Version));
	}
	std::vector<std::string> Kept;
	for (const std::string& Backup : BackupsOf(Folder, "SM_Rock"))
	{
		Kept.push_back(SlotNameIn(ReadText(Folder + TEXT("/") + UE::Headless::FromUtf8(Backup))));
	}
	std::sort(Kept.begin(), Kept.end(), [](const std::string& A, const std::string& B) { return std::stoi(A.substr(1)) < std::stoi(B.substr(1)); });
	std::vector<std::string> Newest;
	for (int32 Version = Saves - 1 - UE::Headless::MaxPackageBackups; Version < Saves - 1; ++Version)
	{
		Newest.push_back("V" + std::to_string(Version));
	}
	EXPECT_EQ(Kept, Newest);
	EXPECT_TRUE(std::filesystem::exists(Utf8(Folder) + "/SM_Rock_Notes.uasset.json"));
	EXPECT_TRUE(std::filesystem::exists(Utf8(Folder) + "/SM_Rocky_2020-01-01-00-00-00.uasset.json"));

	// A package of the same name in another folder keeps its backups apart; the oldest go first, by their names.
	Project.WriteFile("Saved/Backup/Game/Props/SM_Rock_2020-01-01-00-00-00_1.uasset.json", "oldest");
	for (int32 Second = 10; Second < 10 + UE::Headless::MaxPackageBackups; ++Second)
	{
		Project.WriteFile("Saved/Backup/Game/Props/SM_Rock_2020-01-01-00-00-" + std::to_string(Second) + ".uasset.json", "old");
	}
	UStaticMesh* Other = MakeMesh(TEXT("/Game/Props/SM_Rock"), TEXT("SM_Rock"));
	SaveAs(*Other, "Props0");
	SaveAs(*Other, "Props1");
	const std::vector<std::string> Props = BackupsOf(Project.GetDir() + TEXT("/Saved/Backup/Game/Props"), "SM_Rock");
	ASSERT_EQ(Props.size(), (size_t)UE::Headless::MaxPackageBackups);
	EXPECT_EQ(Props.front(), "SM_Rock_2020-01-01-00-00-11.uasset.json");
	EXPECT_EQ(SlotNameIn(ReadText(Project.GetDir() + TEXT("/Saved/Backup/Game/Props/") + UE::Headless::FromUtf8(Props.back()))), "Props0");
	EXPECT_EQ(BackupsOf(Folder, "SM_Rock").size(), (size_t)UE::Headless::MaxPackageBackups);
}

TEST(PackageBackup, ADamagedFileIsKeptBeforeANewPackageReplacesIt)
{
	FTestProject Project;
	const std::string Damaged("{\"format\": \"cvai-headless-package\", \"version\": 2, \"objects\": [\0\x9f", 60);
	Project.WriteFile("Content/Broken/SM_Lost.uasset.json", Damaged);
	ASSERT_TRUE(Project.Start());
	UStaticMesh* Mesh = MakeMesh(TEXT("/Game/Broken/SM_Lost"), TEXT("SM_Lost"));
	ASSERT_TRUE(Save({ Mesh->GetPackage() }, false));
	const FString Folder = Project.GetDir() + TEXT("/Saved/Backup/Game/Broken");
	const std::vector<std::string> Backups = BackupsOf(Folder, "SM_Lost");
	ASSERT_EQ(Backups.size(), 1u);
	EXPECT_EQ(ReadText(Folder + TEXT("/") + UE::Headless::FromUtf8(Backups[0])), Damaged);

	// A package left without assets deletes its file on saving, and that file is kept too.
	const std::string Saved = ReadText(ContentFile(Project, TEXT("Broken/SM_Lost.uasset.json")));
	Mesh->MarkAsGarbage();
	ASSERT_TRUE(Save({ Mesh->GetPackage() }, false));
	EXPECT_FALSE(std::filesystem::exists(Utf8(ContentFile(Project, TEXT("Broken/SM_Lost.uasset.json")))));
	const std::vector<std::string> After = BackupsOf(Folder, "SM_Lost");
	ASSERT_EQ(After.size(), 2u);
	EXPECT_EQ(ReadText(Folder + TEXT("/") + UE::Headless::FromUtf8(After[1])), Saved);
}
