#!/usr/bin/env python3
"""Writes a campaign database the way another program might: Python's own sqlite3, the table
and column names of a campaign at version 5.5.0.0 (no tags yet), loosely declared column types,
and no constraints. Usage: independent_writer.py FILE"""
import sqlite3
import sys

TABLES = {
    "Campaigns": "Name VARCHAR(50), Description MEMO, VersionNumber VARCHAR(50)",
    "Waves": "WaveID LONG, WaveOrder LONG, Name VARCHAR(50), Description MEMO, "
             "WaveStart DATETIME, WaveEnd DATETIME, WaveMidpoint DATETIME",
    "Volumes": "VolumeID INT, Name TEXT, WaveID INT, InheritsFromVolumeID INT, SourceType INT, "
               "MetaData MEMO, CaseData MEMO, IsMatchingStrict BIT, "
               "QuestionMatchingMethods VARCHAR(255), ResponseMatchingMethods VARCHAR(255), "
               "IsMainVolume BIT, InterviewMergeMethod INT, MainVolumeLinkQuestionID INT, "
               "ThisVolumeLinkQuestionID VARCHAR(50), Status INT, CaseSensitiveMatching BIT, "
               "MatchUsingAncestorValues BIT, AddNoNewQuestions BIT, "
               "ReconciliationSourceQuestionIDs MEMO",
    "Questions": "QuestionID INTEGER, IsDeleted BOOLEAN, [Order] INTEGER, Shortcut NVARCHAR(50), "
                 "Indent, ElementType, QuestionType, IsDontKnow, IsSemiOpen, IsScale, "
                 "IsMultiple, IsRanked, MaxResponseCount, Decimals, MinValue FLOAT, "
                 "MaxValue FLOAT, IsLevelLink, LinkQuestionID, IsProbabilityQuestion, DateType, "
                 "QuestionClassID, Versions MEMO, UserData MEMO, IsDevelopLevels, "
                 "AppearanceVolumeID, DeletionWaveID, IsVisibleInAnalyse",
    "QuestionMatchings": "QuestionID, VolumeID, SourceID TEXT, StartVolumeID, EndVolumeID",
    "QuestionClasses": "QuestionClassID INTEGER, Caption TEXT",
    "QuestionCaptions": "QuestionID NUMERIC, LanguageID NUMERIC, LongCaption CLOB, "
                        "ShortCaption CLOB",
    "Modalities": "ModalityID INT, QuestionID INT, IsDeleted BIT, ModalityOrder INT, "
                  "Value DOUBLE, EntryCode VARCHAR(255), IsExclusive BIT, "
                  "RotationBehaviour INT, Versions MEMO, UserData MEMO, "
                  "AppearanceVolumeID INT, DeletionWaveID INT, BaseType SMALLINT",
    "ModalityMatchings": "ModalityID, QuestionID, VolumeID, ModalitySourceID TEXT, "
                         "StartVolumeID, EndVolumeID",
    "ModalityCaptions": "ModalityID INT, QuestionID INT, LanguageID INT, ShortCaption TEXT",
    "Languages": "LanguageID INT, IsDefault BIT, LanguageName VARCHAR(255)",
    "Versions": "VersionID INT, LongCaption MEMO, ShortCaption VARCHAR(255)",
    "ModalityMergings": "MasterModalityID INT, ChildModalityID INT, MergeVolumeID INT",
}

ENGLISH, FRENCH = 1033, 1036


def main(path):
    db = sqlite3.connect(path)
    for table, columns in TABLES.items():
        db.execute(f"CREATE TABLE {table} ({columns})")
    db.execute("INSERT INTO Campaigns VALUES ('Old panel', 'Written elsewhere', '5.5.0.0')")
    db.execute("INSERT INTO Waves (WaveID, WaveOrder, Name) VALUES (1, 0, 'Autumn')")
    db.execute("INSERT INTO Volumes (VolumeID, Name, WaveID, IsMainVolume) "
               "VALUES (5, 'Main', 1, 1)")
    db.executemany("INSERT INTO Languages VALUES (?, ?, ?)",
                   [(ENGLISH, 1, "English"), (FRENCH, 0, "French")])
    db.execute("INSERT INTO Questions (QuestionID, IsDeleted, [Order], Shortcut, "
               "AppearanceVolumeID, UserData) VALUES (10, 0, 1, 'Q10', 5, 'kept as is')")
    db.executemany("INSERT INTO QuestionCaptions VALUES (?, ?, ?, ?)",
                   [(10, ENGLISH, "Which fruit do you like?", "Fruit"),
                    (10, FRENCH, "", "Fruit")])
    responses = [(11, 0, 0, "Apple", "Pomme"), (12, 1, 1, "Pear", "Poire"),
                 (13, 2, 0, "Plum", None)]
    for modality, order, deleted, english, french in responses:
        db.execute("INSERT INTO Modalities (ModalityID, QuestionID, IsDeleted, ModalityOrder, "
                   "EntryCode, AppearanceVolumeID, UserData) VALUES (?, 10, ?, ?, ?, 5, ?)",
                   (modality, deleted, order, str(order + 1), f"data {modality}"))
        db.execute("INSERT INTO ModalityCaptions VALUES (?, 10, ?, ?)",
                   (modality, ENGLISH, english))
        if french is not None:
            db.execute("INSERT INTO ModalityCaptions VALUES (?, 10, ?, ?)",
                       (modality, FRENCH, french))
    db.commit()
    db.close()


if __name__ == "__main__":
    main(sys.argv[1])
