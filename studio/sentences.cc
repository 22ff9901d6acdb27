// The table of sentences with the HTTP status of each.
// SPDX-License-Identifier: Apache-2.0
#include "studio/sentences.h"

#include <algorithm>
#include <iterator>

namespace korvel {
namespace {

struct Row {
  Sentence sentence;
  int status;
};

constexpr int kOtherStatus = 500;

constexpr Row kRows[] = {
    {kUnknownKind, 415},  {kDamaged, 422},          {kTooManyPixels, 413}, {kEncrypted, 422},
    {kTooManyPages, 413}, {kNoSuchPage, 404},       {kTooSlow, 422},       {kSuperseded, 409},
    {kBusy, 503},         {kNoRaster, 422},         {kNoDots, 500},        {kDiskFull, 507},
    {kTooLarge, 413},     {kEmptyFile, 422},        {kNoDocument, 404},    {kNoQueue, 404},
    {kNoSpooler, 503},    {kTooManyDocuments, 503}, {kNoJob, 404},         {kNotOurJob, 403},
    {kConflict, 422},     {kRefused, 502},          {kBadSetting, 422},    {kBadRequest, 400},
    {kNotFound, 404},     {kWrongMethod, 405},      {kWrongHost, 421},     {kCrossSite, 403},
    {kNoToken, 401},
};

template <typename Match>
const Row* find(Match match) {
  const Row* row = std::find_if(std::begin(kRows), std::end(kRows), match);
  return row == std::end(kRows) ? nullptr : row;
}

}  // namespace

std::string codeOf(const std::string& sentence) {
  const Row* row = find([&](const Row& r) { return sentence == r.sentence.english; });
  return row == nullptr ? "failed" : row->sentence.code;
}

int statusOf(const std::string& code) {
  const Row* row = find([&](const Row& r) { return code == r.sentence.code; });
  return row == nullptr ? kOtherStatus : row->status;
}

}  // namespace korvel
