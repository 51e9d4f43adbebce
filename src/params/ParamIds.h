#pragma once
// The flat parameter enumeration. An id is at once the index into the parameter table, the host's
// parameter id and the position of the value in the state chunk: ids are never renumbered. One
// line per family; a family's members follow its first id (slot, gate, envelope or logic module
// 1 first). Twelve-wide effect families run position-major: PR 1..4, FB 1..4, PO 1..4. The step
// families run gate-major: TapDelay1 Step1..Step16, then TapDelay2 ...

// clang-format off
enum EParams : int
{
    kSlotOn1,
    kSlotOn2, kSlotOn3, kSlotOn4,
    kDelayOn1, kDelayOn2, kDelayOn3, kDelayOn4,
    kDirectOut1, kDirectOut2, kDirectOut3, kDirectOut4,
    kInput1,
    kInput2,
    kInput3,
    kInput4,
    kDirectIn1, kDirectIn2, kDirectIn3, kDirectIn4,
    kModulation1, kModulation2, kModulation3, kModulation4,
    kMasterFXSource1, kMasterFXSource2, kMasterFXSource3, kMasterFXSource4,
    kPanPosition1, kPanPosition2, kPanPosition3, kPanPosition4,
    kWidth1, kWidth2, kWidth3, kWidth4,
    kOutputMode1, kOutputMode2, kOutputMode3, kOutputMode4,
    kLROffset1, kLROffset2, kLROffset3, kLROffset4,
    kInputGain1, kInputGain2, kInputGain3, kInputGain4,
    kInputGainModDepth1, kInputGainModDepth2, kInputGainModDepth3, kInputGainModDepth4,
    kInputGainModSource1, kInputGainModSource2, kInputGainModSource3, kInputGainModSource4,
    kPanning1, kPanning2, kPanning3, kPanning4,
    kPanningModDepth1, kPanningModDepth2, kPanningModDepth3, kPanningModDepth4,
    kPanningModSource1, kPanningModSource2, kPanningModSource3, kPanningModSource4,
    kFeedback1, kFeedback2, kFeedback3, kFeedback4,
    kFeedbackModDepth1, kFeedbackModDepth2, kFeedbackModDepth3, kFeedbackModDepth4,
    kFeedbackModSource1, kFeedbackModSource2, kFeedbackModSource3, kFeedbackModSource4,
    kLevel1, kLevel2, kLevel3, kLevel4,
    kLevelModDepth1, kLevelModDepth2, kLevelModDepth3, kLevelModDepth4,
    kLevelModSource1, kLevelModSource2, kLevelModSource3, kLevelModSource4,
    kMFXSend1, kMFXSend2, kMFXSend3, kMFXSend4,
    kMFXSendModDepth1, kMFXSendModDepth2, kMFXSendModDepth3, kMFXSendModDepth4,
    kMFXSendModSource1, kMFXSendModSource2, kMFXSendModSource3, kMFXSendModSource4,
    kFX1PR, kFX2PR, kFX3PR, kFX4PR,
    kFX1FB, kFX2FB, kFX3FB, kFX4FB,
    kFX1PO, kFX2PO, kFX3PO, kFX4PO,
    kFXParam1PR1, kFXParam1PR2, kFXParam1PR3, kFXParam1PR4, kFXParam1FB1, kFXParam1FB2, kFXParam1FB3,
    kFXParam1FB4, kFXParam1PO1, kFXParam1PO2, kFXParam1PO3, kFXParam1PO4,
    kFXParam1ModDepthPR1, kFXParam1ModDepthPR2, kFXParam1ModDepthPR3, kFXParam1ModDepthPR4,
    kFXParam1ModDepthFB1, kFXParam1ModDepthFB2, kFXParam1ModDepthFB3, kFXParam1ModDepthFB4,
    kFXParam1ModDepthPO1, kFXParam1ModDepthPO2, kFXParam1ModDepthPO3, kFXParam1ModDepthPO4,
    kFXParam1ModSourcePR1, kFXParam1ModSourcePR2, kFXParam1ModSourcePR3, kFXParam1ModSourcePR4,
    kFXParam1ModSourceFB1, kFXParam1ModSourceFB2, kFXParam1ModSourceFB3, kFXParam1ModSourceFB4,
    kFXParam1ModSourcePO1, kFXParam1ModSourcePO2, kFXParam1ModSourcePO3, kFXParam1ModSourcePO4,
    kFXParam2PR1, kFXParam2PR2, kFXParam2PR3, kFXParam2PR4, kFXParam2FB1, kFXParam2FB2, kFXParam2FB3,
    kFXParam2FB4, kFXParam2PO1, kFXParam2PO2, kFXParam2PO3, kFXParam2PO4,
    kFXParam2ModDepthPR1, kFXParam2ModDepthPR2, kFXParam2ModDepthPR3, kFXParam2ModDepthPR4,
    kFXParam2ModDepthFB1, kFXParam2ModDepthFB2, kFXParam2ModDepthFB3, kFXParam2ModDepthFB4,
    kFXParam2ModDepthPO1, kFXParam2ModDepthPO2, kFXParam2ModDepthPO3, kFXParam2ModDepthPO4,
    kFXParam2ModSourcePR1, kFXParam2ModSourcePR2, kFXParam2ModSourcePR3, kFXParam2ModSourcePR4,
    kFXParam2ModSourceFB1, kFXParam2ModSourceFB2, kFXParam2ModSourceFB3, kFXParam2ModSourceFB4,
    kFXParam2ModSourcePO1, kFXParam2ModSourcePO2, kFXParam2ModSourcePO3, kFXParam2ModSourcePO4,
    kFXParam3PR1, kFXParam3PR2, kFXParam3PR3, kFXParam3PR4, kFXParam3FB1, kFXParam3FB2, kFXParam3FB3,
    kFXParam3FB4, kFXParam3PO1, kFXParam3PO2, kFXParam3PO3, kFXParam3PO4,
    kFXParam3ModDepthPR1, kFXParam3ModDepthPR2, kFXParam3ModDepthPR3, kFXParam3ModDepthPR4,
    kFXParam3ModDepthFB1, kFXParam3ModDepthFB2, kFXParam3ModDepthFB3, kFXParam3ModDepthFB4,
    kFXParam3ModDepthPO1, kFXParam3ModDepthPO2, kFXParam3ModDepthPO3, kFXParam3ModDepthPO4,
    kFXParam3ModSourcePR1, kFXParam3ModSourcePR2, kFXParam3ModSourcePR3, kFXParam3ModSourcePR4,
    kFXParam3ModSourceFB1, kFXParam3ModSourceFB2, kFXParam3ModSourceFB3, kFXParam3ModSourceFB4,
    kFXParam3ModSourcePO1, kFXParam3ModSourcePO2, kFXParam3ModSourcePO3, kFXParam3ModSourcePO4,
    kFXParam4PR1, kFXParam4PR2, kFXParam4PR3, kFXParam4PR4, kFXParam4FB1, kFXParam4FB2, kFXParam4FB3,
    kFXParam4FB4, kFXParam4PO1, kFXParam4PO2, kFXParam4PO3, kFXParam4PO4,
    kFXParam4ModDepthPR1, kFXParam4ModDepthPR2, kFXParam4ModDepthPR3, kFXParam4ModDepthPR4,
    kFXParam4ModDepthFB1, kFXParam4ModDepthFB2, kFXParam4ModDepthFB3, kFXParam4ModDepthFB4,
    kFXParam4ModDepthPO1, kFXParam4ModDepthPO2, kFXParam4ModDepthPO3, kFXParam4ModDepthPO4,
    kFXParam4ModSourcePR1, kFXParam4ModSourcePR2, kFXParam4ModSourcePR3, kFXParam4ModSourcePR4,
    kFXParam4ModSourceFB1, kFXParam4ModSourceFB2, kFXParam4ModSourceFB3, kFXParam4ModSourceFB4,
    kFXParam4ModSourcePO1, kFXParam4ModSourcePO2, kFXParam4ModSourcePO3, kFXParam4ModSourcePO4,
    kFXParam5PR1, kFXParam5PR2, kFXParam5PR3, kFXParam5PR4, kFXParam5FB1, kFXParam5FB2, kFXParam5FB3,
    kFXParam5FB4, kFXParam5PO1, kFXParam5PO2, kFXParam5PO3, kFXParam5PO4,
    kFXParam5ModDepthPR1, kFXParam5ModDepthPR2, kFXParam5ModDepthPR3, kFXParam5ModDepthPR4,
    kFXParam5ModDepthFB1, kFXParam5ModDepthFB2, kFXParam5ModDepthFB3, kFXParam5ModDepthFB4,
    kFXParam5ModDepthPO1, kFXParam5ModDepthPO2, kFXParam5ModDepthPO3, kFXParam5ModDepthPO4,
    kFXParam5ModSourcePR1, kFXParam5ModSourcePR2, kFXParam5ModSourcePR3, kFXParam5ModSourcePR4,
    kFXParam5ModSourceFB1, kFXParam5ModSourceFB2, kFXParam5ModSourceFB3, kFXParam5ModSourceFB4,
    kFXParam5ModSourcePO1, kFXParam5ModSourcePO2, kFXParam5ModSourcePO3, kFXParam5ModSourcePO4,
    kFXOnPR1, kFXOnPR2, kFXOnPR3, kFXOnPR4,
    kFXOnFB1, kFXOnFB2, kFXOnFB3, kFXOnFB4,
    kFXOnPO1, kFXOnPO2, kFXOnPO3, kFXOnPO4,
    kDelayMode1, kDelayMode2, kDelayMode3, kDelayMode4,
    kDelayRoute1, kDelayRoute2, kDelayRoute3, kDelayRoute4,
    kDelayTaps1, kDelayTaps2, kDelayTaps3, kDelayTaps4,
    kDelayTapFB1, kDelayTapFB2, kDelayTapFB3, kDelayTapFB4,
    kFBProportional1, kFBProportional2, kFBProportional3, kFBProportional4,
    kTimebase1, kTimebase2, kTimebase3, kTimebase4,
    kTapTimebase1, kTapTimebase2, kTapTimebase3, kTapTimebase4,
    kDelayFactorL1, kDelayFactorL2, kDelayFactorL3, kDelayFactorL4,
    kDelayFactorR1, kDelayFactorR2, kDelayFactorR3, kDelayFactorR4,
    kDelayTimeL1, kDelayTimeL2, kDelayTimeL3, kDelayTimeL4,
    kDelayTimeLModDepth1, kDelayTimeLModDepth2, kDelayTimeLModDepth3, kDelayTimeLModDepth4,
    kDelayTimeLModSource1, kDelayTimeLModSource2, kDelayTimeLModSource3, kDelayTimeLModSource4,
    kDelayTimeR1, kDelayTimeR2, kDelayTimeR3, kDelayTimeR4,
    kDelayTimeRModDepth1, kDelayTimeRModDepth2, kDelayTimeRModDepth3, kDelayTimeRModDepth4,
    kDelayTimeRModSource1, kDelayTimeRModSource2, kDelayTimeRModSource3, kDelayTimeRModSource4,
    kTapFXParam1_1, kTapFXParam1_2, kTapFXParam1_3, kTapFXParam1_4,
    kTapFXParam2_1, kTapFXParam2_2, kTapFXParam2_3, kTapFXParam2_4,
    kTapFXParam1Steps1, kTapFXParam1Steps2, kTapFXParam1Steps3, kTapFXParam1Steps4,
    kTapFXParam2Steps1, kTapFXParam2Steps2, kTapFXParam2Steps3, kTapFXParam2Steps4,
    kTapDelay1Step1Time, kTapDelay1Step2Time, kTapDelay1Step3Time, kTapDelay1Step4Time, kTapDelay1Step5Time,
    kTapDelay1Step6Time, kTapDelay1Step7Time, kTapDelay1Step8Time, kTapDelay1Step9Time, kTapDelay1Step10Time,
    kTapDelay1Step11Time, kTapDelay1Step12Time, kTapDelay1Step13Time, kTapDelay1Step14Time,
    kTapDelay1Step15Time, kTapDelay1Step16Time, kTapDelay2Step1Time, kTapDelay2Step2Time,
    kTapDelay2Step3Time, kTapDelay2Step4Time, kTapDelay2Step5Time, kTapDelay2Step6Time, kTapDelay2Step7Time,
    kTapDelay2Step8Time, kTapDelay2Step9Time, kTapDelay2Step10Time, kTapDelay2Step11Time,
    kTapDelay2Step12Time, kTapDelay2Step13Time, kTapDelay2Step14Time, kTapDelay2Step15Time,
    kTapDelay2Step16Time, kTapDelay3Step1Time, kTapDelay3Step2Time, kTapDelay3Step3Time, kTapDelay3Step4Time,
    kTapDelay3Step5Time, kTapDelay3Step6Time, kTapDelay3Step7Time, kTapDelay3Step8Time, kTapDelay3Step9Time,
    kTapDelay3Step10Time, kTapDelay3Step11Time, kTapDelay3Step12Time, kTapDelay3Step13Time,
    kTapDelay3Step14Time, kTapDelay3Step15Time, kTapDelay3Step16Time, kTapDelay4Step1Time,
    kTapDelay4Step2Time, kTapDelay4Step3Time, kTapDelay4Step4Time, kTapDelay4Step5Time, kTapDelay4Step6Time,
    kTapDelay4Step7Time, kTapDelay4Step8Time, kTapDelay4Step9Time, kTapDelay4Step10Time,
    kTapDelay4Step11Time, kTapDelay4Step12Time, kTapDelay4Step13Time, kTapDelay4Step14Time,
    kTapDelay4Step15Time, kTapDelay4Step16Time,
    kTapDelay1Step1Level, kTapDelay1Step2Level, kTapDelay1Step3Level, kTapDelay1Step4Level,
    kTapDelay1Step5Level, kTapDelay1Step6Level, kTapDelay1Step7Level, kTapDelay1Step8Level,
    kTapDelay1Step9Level, kTapDelay1Step10Level, kTapDelay1Step11Level, kTapDelay1Step12Level,
    kTapDelay1Step13Level, kTapDelay1Step14Level, kTapDelay1Step15Level, kTapDelay1Step16Level,
    kTapDelay2Step1Level, kTapDelay2Step2Level, kTapDelay2Step3Level, kTapDelay2Step4Level,
    kTapDelay2Step5Level, kTapDelay2Step6Level, kTapDelay2Step7Level, kTapDelay2Step8Level,
    kTapDelay2Step9Level, kTapDelay2Step10Level, kTapDelay2Step11Level, kTapDelay2Step12Level,
    kTapDelay2Step13Level, kTapDelay2Step14Level, kTapDelay2Step15Level, kTapDelay2Step16Level,
    kTapDelay3Step1Level, kTapDelay3Step2Level, kTapDelay3Step3Level, kTapDelay3Step4Level,
    kTapDelay3Step5Level, kTapDelay3Step6Level, kTapDelay3Step7Level, kTapDelay3Step8Level,
    kTapDelay3Step9Level, kTapDelay3Step10Level, kTapDelay3Step11Level, kTapDelay3Step12Level,
    kTapDelay3Step13Level, kTapDelay3Step14Level, kTapDelay3Step15Level, kTapDelay3Step16Level,
    kTapDelay4Step1Level, kTapDelay4Step2Level, kTapDelay4Step3Level, kTapDelay4Step4Level,
    kTapDelay4Step5Level, kTapDelay4Step6Level, kTapDelay4Step7Level, kTapDelay4Step8Level,
    kTapDelay4Step9Level, kTapDelay4Step10Level, kTapDelay4Step11Level, kTapDelay4Step12Level,
    kTapDelay4Step13Level, kTapDelay4Step14Level, kTapDelay4Step15Level, kTapDelay4Step16Level,
    kTapDelay1Step1Pan, kTapDelay1Step2Pan, kTapDelay1Step3Pan, kTapDelay1Step4Pan, kTapDelay1Step5Pan,
    kTapDelay1Step6Pan, kTapDelay1Step7Pan, kTapDelay1Step8Pan, kTapDelay1Step9Pan, kTapDelay1Step10Pan,
    kTapDelay1Step11Pan, kTapDelay1Step12Pan, kTapDelay1Step13Pan, kTapDelay1Step14Pan, kTapDelay1Step15Pan,
    kTapDelay1Step16Pan, kTapDelay2Step1Pan, kTapDelay2Step2Pan, kTapDelay2Step3Pan, kTapDelay2Step4Pan,
    kTapDelay2Step5Pan, kTapDelay2Step6Pan, kTapDelay2Step7Pan, kTapDelay2Step8Pan, kTapDelay2Step9Pan,
    kTapDelay2Step10Pan, kTapDelay2Step11Pan, kTapDelay2Step12Pan, kTapDelay2Step13Pan, kTapDelay2Step14Pan,
    kTapDelay2Step15Pan, kTapDelay2Step16Pan, kTapDelay3Step1Pan, kTapDelay3Step2Pan, kTapDelay3Step3Pan,
    kTapDelay3Step4Pan, kTapDelay3Step5Pan, kTapDelay3Step6Pan, kTapDelay3Step7Pan, kTapDelay3Step8Pan,
    kTapDelay3Step9Pan, kTapDelay3Step10Pan, kTapDelay3Step11Pan, kTapDelay3Step12Pan, kTapDelay3Step13Pan,
    kTapDelay3Step14Pan, kTapDelay3Step15Pan, kTapDelay3Step16Pan, kTapDelay4Step1Pan, kTapDelay4Step2Pan,
    kTapDelay4Step3Pan, kTapDelay4Step4Pan, kTapDelay4Step5Pan, kTapDelay4Step6Pan, kTapDelay4Step7Pan,
    kTapDelay4Step8Pan, kTapDelay4Step9Pan, kTapDelay4Step10Pan, kTapDelay4Step11Pan, kTapDelay4Step12Pan,
    kTapDelay4Step13Pan, kTapDelay4Step14Pan, kTapDelay4Step15Pan, kTapDelay4Step16Pan,
    kTapDelay1Step1FXP1, kTapDelay1Step2FXP1, kTapDelay1Step3FXP1, kTapDelay1Step4FXP1, kTapDelay1Step5FXP1,
    kTapDelay1Step6FXP1, kTapDelay1Step7FXP1, kTapDelay1Step8FXP1, kTapDelay1Step9FXP1, kTapDelay1Step10FXP1,
    kTapDelay1Step11FXP1, kTapDelay1Step12FXP1, kTapDelay1Step13FXP1, kTapDelay1Step14FXP1,
    kTapDelay1Step15FXP1, kTapDelay1Step16FXP1, kTapDelay2Step1FXP1, kTapDelay2Step2FXP1,
    kTapDelay2Step3FXP1, kTapDelay2Step4FXP1, kTapDelay2Step5FXP1, kTapDelay2Step6FXP1, kTapDelay2Step7FXP1,
    kTapDelay2Step8FXP1, kTapDelay2Step9FXP1, kTapDelay2Step10FXP1, kTapDelay2Step11FXP1,
    kTapDelay2Step12FXP1, kTapDelay2Step13FXP1, kTapDelay2Step14FXP1, kTapDelay2Step15FXP1,
    kTapDelay2Step16FXP1, kTapDelay3Step1FXP1, kTapDelay3Step2FXP1, kTapDelay3Step3FXP1, kTapDelay3Step4FXP1,
    kTapDelay3Step5FXP1, kTapDelay3Step6FXP1, kTapDelay3Step7FXP1, kTapDelay3Step8FXP1, kTapDelay3Step9FXP1,
    kTapDelay3Step10FXP1, kTapDelay3Step11FXP1, kTapDelay3Step12FXP1, kTapDelay3Step13FXP1,
    kTapDelay3Step14FXP1, kTapDelay3Step15FXP1, kTapDelay3Step16FXP1, kTapDelay4Step1FXP1,
    kTapDelay4Step2FXP1, kTapDelay4Step3FXP1, kTapDelay4Step4FXP1, kTapDelay4Step5FXP1, kTapDelay4Step6FXP1,
    kTapDelay4Step7FXP1, kTapDelay4Step8FXP1, kTapDelay4Step9FXP1, kTapDelay4Step10FXP1,
    kTapDelay4Step11FXP1, kTapDelay4Step12FXP1, kTapDelay4Step13FXP1, kTapDelay4Step14FXP1,
    kTapDelay4Step15FXP1, kTapDelay4Step16FXP1,
    kTapDelay1Step1FXP2, kTapDelay1Step2FXP2, kTapDelay1Step3FXP2, kTapDelay1Step4FXP2, kTapDelay1Step5FXP2,
    kTapDelay1Step6FXP2, kTapDelay1Step7FXP2, kTapDelay1Step8FXP2, kTapDelay1Step9FXP2, kTapDelay1Step10FXP2,
    kTapDelay1Step11FXP2, kTapDelay1Step12FXP2, kTapDelay1Step13FXP2, kTapDelay1Step14FXP2,
    kTapDelay1Step15FXP2, kTapDelay1Step16FXP2, kTapDelay2Step1FXP2, kTapDelay2Step2FXP2,
    kTapDelay2Step3FXP2, kTapDelay2Step4FXP2, kTapDelay2Step5FXP2, kTapDelay2Step6FXP2, kTapDelay2Step7FXP2,
    kTapDelay2Step8FXP2, kTapDelay2Step9FXP2, kTapDelay2Step10FXP2, kTapDelay2Step11FXP2,
    kTapDelay2Step12FXP2, kTapDelay2Step13FXP2, kTapDelay2Step14FXP2, kTapDelay2Step15FXP2,
    kTapDelay2Step16FXP2, kTapDelay3Step1FXP2, kTapDelay3Step2FXP2, kTapDelay3Step3FXP2, kTapDelay3Step4FXP2,
    kTapDelay3Step5FXP2, kTapDelay3Step6FXP2, kTapDelay3Step7FXP2, kTapDelay3Step8FXP2, kTapDelay3Step9FXP2,
    kTapDelay3Step10FXP2, kTapDelay3Step11FXP2, kTapDelay3Step12FXP2, kTapDelay3Step13FXP2,
    kTapDelay3Step14FXP2, kTapDelay3Step15FXP2, kTapDelay3Step16FXP2, kTapDelay4Step1FXP2,
    kTapDelay4Step2FXP2, kTapDelay4Step3FXP2, kTapDelay4Step4FXP2, kTapDelay4Step5FXP2, kTapDelay4Step6FXP2,
    kTapDelay4Step7FXP2, kTapDelay4Step8FXP2, kTapDelay4Step9FXP2, kTapDelay4Step10FXP2,
    kTapDelay4Step11FXP2, kTapDelay4Step12FXP2, kTapDelay4Step13FXP2, kTapDelay4Step14FXP2,
    kTapDelay4Step15FXP2, kTapDelay4Step16FXP2,
    kTapTimeStepDepth1, kTapTimeStepDepth2, kTapTimeStepDepth3, kTapTimeStepDepth4,
    kTapLevelStepDepth1, kTapLevelStepDepth2, kTapLevelStepDepth3, kTapLevelStepDepth4,
    kTapPanWidth1, kTapPanWidth2, kTapPanWidth3, kTapPanWidth4,
    kTapFXP1StepDepth1, kTapFXP1StepDepth2, kTapFXP1StepDepth3, kTapFXP1StepDepth4,
    kTapFXP2StepDepth1, kTapFXP2StepDepth2, kTapFXP2StepDepth3, kTapFXP2StepDepth4,
    kTapTimeSteps1, kTapTimeSteps2, kTapTimeSteps3, kTapTimeSteps4,
    kTapLevelSteps1, kTapLevelSteps2, kTapLevelSteps3, kTapLevelSteps4,
    kTapPanSteps1, kTapPanSteps2, kTapPanSteps3, kTapPanSteps4,
    kTapPanMode1, kTapPanMode2, kTapPanMode3, kTapPanMode4,
    kDelayTapDIOut1, kDelayTapDIOut2, kDelayTapDIOut3, kDelayTapDIOut4,
    kDelayTapsTime1, kDelayTapsTime2, kDelayTapsTime3, kDelayTapsTime4,
    kDelayTapsTimeModDepth1, kDelayTapsTimeModDepth2, kDelayTapsTimeModDepth3, kDelayTapsTimeModDepth4,
    kDelayTapsTimeModSource1, kDelayTapsTimeModSource2, kDelayTapsTimeModSource3, kDelayTapsTimeModSource4,
    kDelayTapsSwell1, kDelayTapsSwell2, kDelayTapsSwell3, kDelayTapsSwell4,
    kDelayLRLink1, kDelayLRLink2, kDelayLRLink3, kDelayLRLink4,
    kDelaySpread1, kDelaySpread2, kDelaySpread3, kDelaySpread4,
    kDelayModDepth1, kDelayModDepth2, kDelayModDepth3, kDelayModDepth4,
    kDelaySpreadModSource1, kDelaySpreadModSource2, kDelaySpreadModSource3, kDelaySpreadModSource4,
    kDelayLopass1, kDelayLopass2, kDelayLopass3, kDelayLopass4,
    kDelayHipass1, kDelayHipass2, kDelayHipass3, kDelayHipass4,
    kGrainSize1, kGrainSize2, kGrainSize3, kGrainSize4,
    kGrainSizeModDepth1, kGrainSizeModDepth2, kGrainSizeModDepth3, kGrainSizeModDepth4,
    kGrainSizeModSource1, kGrainSizeModSource2, kGrainSizeModSource3, kGrainSizeModSource4,
    kGrainSpeed1, kGrainSpeed2, kGrainSpeed3, kGrainSpeed4,
    kGSpeedModDepth1, kGSpeedModDepth2, kGSpeedModDepth3, kGSpeedModDepth4,
    kGrainSpreadModSource1, kGrainSpreadModSource2, kGrainSpreadModSource3, kGrainSpreadModSource4,
    kGrainPosition1, kGrainPosition2, kGrainPosition3, kGrainPosition4,
    kGPositionModDepth1, kGPositionModDepth2, kGPositionModDepth3, kGPositionModDepth4,
    kGrainSpeedModSource1, kGrainSpeedModSource2, kGrainSpeedModSource3, kGrainSpeedModSource4,
    kGrainFade1, kGrainFade2, kGrainFade3, kGrainFade4,
    kReverseDelayTrigger1, kReverseDelayTrigger2, kReverseDelayTrigger3, kReverseDelayTrigger4,
    kReverseXFade1, kReverseXFade2, kReverseXFade3, kReverseXFade4,
    kLFOOn1, kLFOOn2, kLFOOn3, kLFOOn4,
    kLFOWave1, kLFOWave2, kLFOWave3, kLFOWave4,
    kLFOPol1, kLFOPol2, kLFOPol3, kLFOPol4,
    kLFOSync1, kLFOSync2, kLFOSync3, kLFOSync4,
    kLFOSwap1, kLFOSwap2, kLFOSwap3, kLFOSwap4,
    kLFOReverse1, kLFOReverse2, kLFOReverse3, kLFOReverse4,
    kLFOMode1, kLFOMode2, kLFOMode3, kLFOMode4,
    kLFOTrigger1, kLFOTrigger2, kLFOTrigger3, kLFOTrigger4,
    kLFORate1, kLFORate2, kLFORate3, kLFORate4,
    kLFOFreqModDepth1, kLFOFreqModDepth2, kLFOFreqModDepth3, kLFOFreqModDepth4,
    kLFOFreqModSource1, kLFOFreqModSource2, kLFOFreqModSource3, kLFOFreqModSource4,
    kLFODepth1, kLFODepth2, kLFODepth3, kLFODepth4,
    kLFOPhase1, kLFOPhase2, kLFOPhase3, kLFOPhase4,
    kLFOGlide1, kLFOGlide2, kLFOGlide3, kLFOGlide4,
    kGate1Length, kGate2Length, kGate3Length, kGate4Length,
    kGate1On, kGate2On, kGate3On, kGate4On,
    kGate1Timebase, kGate2Timebase, kGate3Timebase, kGate4Timebase,
    kGate1Direction, kGate2Direction, kGate3Direction, kGate4Direction,
    kGate1Sync, kGate2Sync, kGate3Sync, kGate4Sync,
    kGate1Glide, kGate2Glide, kGate3Glide, kGate4Glide,
    kGate1Depth, kGate2Depth, kGate3Depth, kGate4Depth,
    kGATEPol1, kGATEPol2, kGATEPol3, kGATEPol4,
    kGATESteps1, kGATESteps2, kGATESteps3, kGATESteps4,
    kGate1Step1, kGate1Step2, kGate1Step3, kGate1Step4, kGate1Step5, kGate1Step6, kGate1Step7, kGate1Step8,
    kGate1Step9, kGate1Step10, kGate1Step11, kGate1Step12, kGate1Step13, kGate1Step14, kGate1Step15,
    kGate1Step16, kGate2Step1, kGate2Step2, kGate2Step3, kGate2Step4, kGate2Step5, kGate2Step6, kGate2Step7,
    kGate2Step8, kGate2Step9, kGate2Step10, kGate2Step11, kGate2Step12, kGate2Step13, kGate2Step14,
    kGate2Step15, kGate2Step16, kGate3Step1, kGate3Step2, kGate3Step3, kGate3Step4, kGate3Step5, kGate3Step6,
    kGate3Step7, kGate3Step8, kGate3Step9, kGate3Step10, kGate3Step11, kGate3Step12, kGate3Step13,
    kGate3Step14, kGate3Step15, kGate3Step16, kGate4Step1, kGate4Step2, kGate4Step3, kGate4Step4,
    kGate4Step5, kGate4Step6, kGate4Step7, kGate4Step8, kGate4Step9, kGate4Step10, kGate4Step11,
    kGate4Step12, kGate4Step13, kGate4Step14, kGate4Step15, kGate4Step16,
    kENV1On, kENV2On,
    kENV1Mode, kENV2Mode,
    kENV1Source, kENV2Source,
    kENV1Gain, kENV2Gain,
    kENV1Attack, kENV2Attack,
    kENV1Decay, kENV2Decay,
    kENV1Hold, kENV2Hold,
    kENV1Threshold, kENV2Threshold,
    kENV1Locut, kENV2Locut,
    kENV1Hicut, kENV2Hicut,
    kENV1Depth, kENV2Depth,
    kENV1Output, kENV2Output,
    kLogicOn1, kLogicOn2, kLogicOn3, kLogicOn4,
    kLogic1Type, kLogic2Type, kLogic3Type, kLogic4Type,
    kLogic1Source1Depth, kLogic2Source1Depth, kLogic3Source1Depth, kLogic4Source1Depth,
    kLogic1Source1, kLogic2Source1, kLogic3Source1, kLogic4Source1,
    kLogic1Source2Depth, kLogic2Source2Depth, kLogic3Source2Depth, kLogic4Source2Depth,
    kLogic1Source2, kLogic2Source2, kLogic3Source2, kLogic4Source2,
    kLogic1Smooth, kLogic2Smooth, kLogic3Smooth, kLogic4Smooth,
    kLogic1Depth, kLogic2Depth, kLogic3Depth, kLogic4Depth,
    kLogic1DepthMod, kLogic2DepthMod, kLogic3DepthMod, kLogic4DepthMod,
    kLogic1DepthModSource, kLogic2DepthModSource, kLogic3DepthModSource, kLogic4DepthModSource,
    kMasterFX,
    kMasterFXBypass,
    kMasterFXP1,
    kMasterFXP2,
    kMasterFXP3,
    kMasterFXP4,
    kMainModRate,
    kMainModDepth,
    kFeedbackMaster,
    kDelayTimeScale,
    kMasterFXLevel,
    kLimiterOn,
    kLimiterLevel,
    kWetLevel,
    kDryLevel,
    kOutputLevel,
    kGlobalWidth,
    kFBMatrix1, kFBMatrix2, kFBMatrix3, kFBMatrix4,
    kSlot1FB1, kSlot1FB2, kSlot1FB3, kSlot1FB4,
    kSlot2FB1, kSlot2FB2, kSlot2FB3, kSlot2FB4,
    kSlot3FB1, kSlot3FB2, kSlot3FB3, kSlot3FB4,
    kSlot4FB1, kSlot4FB2, kSlot4FB3, kSlot4FB4,
    kDelayTapsSwing1, kDelayTapsSwing2, kDelayTapsSwing3, kDelayTapsSwing4,
    kNoOp,
    kBP,

    kNumParams
};
// clang-format on

static_assert(kNumParams == 1095);
static_assert(kBP == 1094 && kNoOp == 1093);

// First id of every family, so that an enumerator added or dropped in the middle shows at once.
// clang-format off
static_assert(kSlotOn1 == 0); static_assert(kSlotOn2 == 1); static_assert(kDelayOn1 == 4);
static_assert(kDirectOut1 == 8); static_assert(kInput1 == 12); static_assert(kInput2 == 13);
static_assert(kInput3 == 14); static_assert(kInput4 == 15); static_assert(kDirectIn1 == 16);
static_assert(kModulation1 == 20); static_assert(kMasterFXSource1 == 24); static_assert(kPanPosition1 == 28);
static_assert(kWidth1 == 32); static_assert(kOutputMode1 == 36); static_assert(kLROffset1 == 40);
static_assert(kInputGain1 == 44); static_assert(kInputGainModDepth1 == 48);
static_assert(kInputGainModSource1 == 52); static_assert(kPanning1 == 56);
static_assert(kPanningModDepth1 == 60); static_assert(kPanningModSource1 == 64);
static_assert(kFeedback1 == 68); static_assert(kFeedbackModDepth1 == 72);
static_assert(kFeedbackModSource1 == 76); static_assert(kLevel1 == 80); static_assert(kLevelModDepth1 == 84);
static_assert(kLevelModSource1 == 88); static_assert(kMFXSend1 == 92);
static_assert(kMFXSendModDepth1 == 96); static_assert(kMFXSendModSource1 == 100);
static_assert(kFX1PR == 104); static_assert(kFX1FB == 108); static_assert(kFX1PO == 112);
static_assert(kFXParam1PR1 == 116); static_assert(kFXParam1ModDepthPR1 == 128);
static_assert(kFXParam1ModSourcePR1 == 140); static_assert(kFXParam2PR1 == 152);
static_assert(kFXParam2ModDepthPR1 == 164); static_assert(kFXParam2ModSourcePR1 == 176);
static_assert(kFXParam3PR1 == 188); static_assert(kFXParam3ModDepthPR1 == 200);
static_assert(kFXParam3ModSourcePR1 == 212); static_assert(kFXParam4PR1 == 224);
static_assert(kFXParam4ModDepthPR1 == 236); static_assert(kFXParam4ModSourcePR1 == 248);
static_assert(kFXParam5PR1 == 260); static_assert(kFXParam5ModDepthPR1 == 272);
static_assert(kFXParam5ModSourcePR1 == 284); static_assert(kFXOnPR1 == 296); static_assert(kFXOnFB1 == 300);
static_assert(kFXOnPO1 == 304); static_assert(kDelayMode1 == 308); static_assert(kDelayRoute1 == 312);
static_assert(kDelayTaps1 == 316); static_assert(kDelayTapFB1 == 320);
static_assert(kFBProportional1 == 324); static_assert(kTimebase1 == 328);
static_assert(kTapTimebase1 == 332); static_assert(kDelayFactorL1 == 336);
static_assert(kDelayFactorR1 == 340); static_assert(kDelayTimeL1 == 344);
static_assert(kDelayTimeLModDepth1 == 348); static_assert(kDelayTimeLModSource1 == 352);
static_assert(kDelayTimeR1 == 356); static_assert(kDelayTimeRModDepth1 == 360);
static_assert(kDelayTimeRModSource1 == 364); static_assert(kTapFXParam1_1 == 368);
static_assert(kTapFXParam2_1 == 372); static_assert(kTapFXParam1Steps1 == 376);
static_assert(kTapFXParam2Steps1 == 380); static_assert(kTapDelay1Step1Time == 384);
static_assert(kTapDelay1Step1Level == 448); static_assert(kTapDelay1Step1Pan == 512);
static_assert(kTapDelay1Step1FXP1 == 576); static_assert(kTapDelay1Step1FXP2 == 640);
static_assert(kTapTimeStepDepth1 == 704); static_assert(kTapLevelStepDepth1 == 708);
static_assert(kTapPanWidth1 == 712); static_assert(kTapFXP1StepDepth1 == 716);
static_assert(kTapFXP2StepDepth1 == 720); static_assert(kTapTimeSteps1 == 724);
static_assert(kTapLevelSteps1 == 728); static_assert(kTapPanSteps1 == 732);
static_assert(kTapPanMode1 == 736); static_assert(kDelayTapDIOut1 == 740);
static_assert(kDelayTapsTime1 == 744); static_assert(kDelayTapsTimeModDepth1 == 748);
static_assert(kDelayTapsTimeModSource1 == 752); static_assert(kDelayTapsSwell1 == 756);
static_assert(kDelayLRLink1 == 760); static_assert(kDelaySpread1 == 764);
static_assert(kDelayModDepth1 == 768); static_assert(kDelaySpreadModSource1 == 772);
static_assert(kDelayLopass1 == 776); static_assert(kDelayHipass1 == 780); static_assert(kGrainSize1 == 784);
static_assert(kGrainSizeModDepth1 == 788); static_assert(kGrainSizeModSource1 == 792);
static_assert(kGrainSpeed1 == 796); static_assert(kGSpeedModDepth1 == 800);
static_assert(kGrainSpreadModSource1 == 804); static_assert(kGrainPosition1 == 808);
static_assert(kGPositionModDepth1 == 812); static_assert(kGrainSpeedModSource1 == 816);
static_assert(kGrainFade1 == 820); static_assert(kReverseDelayTrigger1 == 824);
static_assert(kReverseXFade1 == 828); static_assert(kLFOOn1 == 832); static_assert(kLFOWave1 == 836);
static_assert(kLFOPol1 == 840); static_assert(kLFOSync1 == 844); static_assert(kLFOSwap1 == 848);
static_assert(kLFOReverse1 == 852); static_assert(kLFOMode1 == 856); static_assert(kLFOTrigger1 == 860);
static_assert(kLFORate1 == 864); static_assert(kLFOFreqModDepth1 == 868);
static_assert(kLFOFreqModSource1 == 872); static_assert(kLFODepth1 == 876); static_assert(kLFOPhase1 == 880);
static_assert(kLFOGlide1 == 884); static_assert(kGate1Length == 888); static_assert(kGate1On == 892);
static_assert(kGate1Timebase == 896); static_assert(kGate1Direction == 900);
static_assert(kGate1Sync == 904); static_assert(kGate1Glide == 908); static_assert(kGate1Depth == 912);
static_assert(kGATEPol1 == 916); static_assert(kGATESteps1 == 920); static_assert(kGate1Step1 == 924);
static_assert(kENV1On == 988); static_assert(kENV1Mode == 990); static_assert(kENV1Source == 992);
static_assert(kENV1Gain == 994); static_assert(kENV1Attack == 996); static_assert(kENV1Decay == 998);
static_assert(kENV1Hold == 1000); static_assert(kENV1Threshold == 1002); static_assert(kENV1Locut == 1004);
static_assert(kENV1Hicut == 1006); static_assert(kENV1Depth == 1008); static_assert(kENV1Output == 1010);
static_assert(kLogicOn1 == 1012); static_assert(kLogic1Type == 1016);
static_assert(kLogic1Source1Depth == 1020); static_assert(kLogic1Source1 == 1024);
static_assert(kLogic1Source2Depth == 1028); static_assert(kLogic1Source2 == 1032);
static_assert(kLogic1Smooth == 1036); static_assert(kLogic1Depth == 1040);
static_assert(kLogic1DepthMod == 1044); static_assert(kLogic1DepthModSource == 1048);
static_assert(kMasterFX == 1052); static_assert(kMasterFXBypass == 1053); static_assert(kMasterFXP1 == 1054);
static_assert(kMasterFXP2 == 1055); static_assert(kMasterFXP3 == 1056); static_assert(kMasterFXP4 == 1057);
static_assert(kMainModRate == 1058); static_assert(kMainModDepth == 1059);
static_assert(kFeedbackMaster == 1060); static_assert(kDelayTimeScale == 1061);
static_assert(kMasterFXLevel == 1062); static_assert(kLimiterOn == 1063);
static_assert(kLimiterLevel == 1064); static_assert(kWetLevel == 1065); static_assert(kDryLevel == 1066);
static_assert(kOutputLevel == 1067); static_assert(kGlobalWidth == 1068); static_assert(kFBMatrix1 == 1069);
static_assert(kSlot1FB1 == 1073); static_assert(kSlot2FB1 == 1077); static_assert(kSlot3FB1 == 1081);
static_assert(kSlot4FB1 == 1085); static_assert(kDelayTapsSwing1 == 1089); static_assert(kNoOp == 1093);
static_assert(kBP == 1094);
// clang-format on
