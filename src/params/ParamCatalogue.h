#pragma once
// Builds the parameter table: one IParamRecord per id of EParams, from a constant table with one
// row per family. Runs once in the plug-in's constructor, after the wave list exists and before
// any host call. The preset keys (names without blanks) are the same for every instance.

#include "params/IParamRecord.h"
#include "params/ParamIds.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Replaces `params` by kNumParams fresh records at their defaults. waveNames are the LFO wave
// menu names in menu order; they give the range and texts of `LFO Wave n`.
void InitParams(std::vector<std::unique_ptr<IParamRecord>>& params, std::span<const char* const> waveNames);

// An enum over a list: range 0..size-1, one display text per entry in list order.
void InitEnumFromList(IParamRecord& param, const char* name, std::span<const char* const> list,
                      int defaultVal);

// The record of an id, or null for an id out of range.
IParamRecord* GetParam(const std::vector<std::unique_ptr<IParamRecord>>& params, int id);

// Display name of an id, as InitParams gives it; empty for an id out of range.
std::string ParamName(int id);

// Preset keys in id order: the names with every blank removed. Five pairs of logic parameters
// share a name and so a key; readers take the lower id first. Safe from any thread.
const std::vector<std::string>& ParamKeys();
// Key of one id; empty for an id out of range.
std::string_view ParamKey(int id);
