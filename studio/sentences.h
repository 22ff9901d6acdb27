// What can go wrong, as a code for programs and one English sentence for people. The page in the
// browser translates the code.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_SENTENCES_H
#define KORVEL_STUDIO_SENTENCES_H

#include <string>

namespace korvel {

struct Sentence {
  const char* code;
  const char* english;
};

inline constexpr Sentence kUnknownKind = {
    "unknown-kind", "This is not a PNG, JPEG, TIFF, WebP or PDF file; save it as one of these."};
inline constexpr Sentence kDamaged = {
    "damaged", "The file is damaged or incomplete; save it again and upload the new file."};
inline constexpr Sentence kTooManyPixels = {
    "too-many-pixels", "The picture has too many pixels; save it with at most 64 megapixels."};
inline constexpr Sentence kEncrypted = {
    "encrypted", "The PDF file is protected by a password; save it without one."};
inline constexpr Sentence kTooManyPages = {
    "too-many-pages", "The PDF file has more than 500 pages; split it into shorter files."};
inline constexpr Sentence kNoSuchPage = {"no-such-page",
                                         "The document has no page of that number."};
inline constexpr Sentence kTooSlow = {
    "too-slow", "The document took too long to prepare and was stopped; simplify it."};
inline constexpr Sentence kSuperseded = {
    "superseded", "A newer preview of the same document has replaced this one."};
inline constexpr Sentence kBusy = {
    "busy", "The server is busy with other previews; try again in a moment."};
inline constexpr Sentence kNoRaster = {
    "no-raster", "The print system could not turn the document into a page; see the server's log."};
inline constexpr Sentence kNoDots = {
    "no-dots", "The print filter could not process the page; see the server's log."};
inline constexpr Sentence kDiskFull = {
    "disk-full", "The server cannot store the file: the disk is full or not writable."};
inline constexpr Sentence kTooLarge = {
    "too-large", "The file is larger than 40 MB; make it smaller and upload it again."};
inline constexpr Sentence kEmptyFile = {"empty-file", "The file is empty; choose another one."};
inline constexpr Sentence kTooManyDocuments = {
    "too-many-documents", "Too many documents are open on the server; try again in a few minutes."};
inline constexpr Sentence kNoDocument = {
    "no-document", "The document is no longer on the server; upload it again."};
inline constexpr Sentence kNoQueue = {
    "no-queue", "There is no such printer; GET /api/queues lists the printers."};
inline constexpr Sentence kNoSpooler = {
    "no-spooler", "The print system does not answer; start CUPS and try again."};
inline constexpr Sentence kNoJob = {"no-job", "There is no such job on these printers."};
inline constexpr Sentence kNotOurJob = {"not-our-job",
                                        "The job was not sent from here, or it has already ended."};
inline constexpr Sentence kRefused = {
    "refused", "The print system did not accept the job; check that the printer accepts jobs."};
inline constexpr Sentence kBadSetting = {
    "bad-setting", "The printer does not offer this setting; GET /api/queues lists the settings."};
inline constexpr Sentence kConflict = {
    "conflict", "The printer cannot combine these settings; change one of them back."};
inline constexpr Sentence kBadRequest = {
    "bad-request", "The request is malformed; see the description of the API."};
inline constexpr Sentence kNotFound = {"not-found", "There is nothing at this address."};
inline constexpr Sentence kWrongMethod = {"wrong-method",
                                          "This address does not support that request method."};
inline constexpr Sentence kWrongHost = {
    "wrong-host",
    "The server does not answer under this name; start it with --name to allow the name."};
inline constexpr Sentence kCrossSite = {"cross-site",
                                        "The request comes from another web site and was refused."};
inline constexpr Sentence kNoToken = {
    "no-token", "Access needs the token; open the address that the server printed at start."};

// The code that belongs to a sentence of this table; "failed" for all other texts.
std::string codeOf(const std::string& sentence);

// The HTTP status that goes with a code.
int statusOf(const std::string& code);

}  // namespace korvel

#endif
