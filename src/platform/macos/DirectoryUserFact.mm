#import <Foundation/Foundation.h>
#import <OpenDirectory/OpenDirectory.h>

#include <optional>
#include <string>

#include "common/QVSLogger.h"
#include "platform/macos/CoreFoundationValue.h"
#include "platform/macos/MacFacts.h"

namespace tov {
namespace {

std::string reasonOf(NSError* error) {
    if (error == nil) return "no answer";
    return stringOfCFString((__bridge CFTypeRef)[error localizedDescription]).value_or("an error without description");
}

// Whether a step of the directory lookup failed (no result, or an error told); logs why.
bool stepFailed(id result, NSError* error, const char* step, const std::string& userName) {
    if (result != nil && error == nil) return false;
    QVSLogger::debug("The directory cannot %s for the user \"%s\": %s", step, userName.c_str(),
                     reasonOf(error).c_str());
    return true;
}

// The first user record with the record name on the authentication search node, holding
// its meta record name; nil when there is none or the directory cannot be asked.
ODRecord* firstUserRecord(NSString* recordName, const std::string& userName) {
    NSError* error = nil;
    ODNode* node = [ODNode nodeWithSession:[ODSession defaultSession] type:kODNodeTypeAuthentication error:&error];
    if (stepFailed(node, error, "open the authentication search node", userName)) return nil;
    ODQuery* query = [ODQuery queryWithNode:node
                             forRecordTypes:kODRecordTypeUsers
                                  attribute:kODAttributeTypeRecordName
                                  matchType:kODMatchEqualTo
                                queryValues:recordName
                           returnAttributes:kODAttributeTypeMetaRecordName
                             maximumResults:1
                                      error:&error];
    if (stepFailed(query, error, "make the query", userName)) return nil;
    NSArray* results = [query resultsAllowingPartial:NO error:&error];
    if (stepFailed(results, error, "search the user records", userName)) return nil;
    id first = [results firstObject];
    if (![first isKindOfClass:[ODRecord class]]) {
        QVSLogger::debug("The directory has no user record named \"%s\".", userName.c_str());
        return nil;
    }
    return first;
}

// The directory's answer for an attribute the record does not have (a local account has
// no meta record name).
bool isMissingAttribute(NSError* error) {
    return [[error domain] isEqualToString:ODFrameworkErrorDomain] &&
           [error code] == static_cast<NSInteger>(kODErrorRecordAttributeNotFound);
}

// { "metaRecordName": the record's values of the attribute } ([] when it has none);
// absent when they cannot be read.
Value metaRecordNameFact(ODRecord* record, const std::string& userName) {
    NSError* error = nil;
    NSArray* values = [record valuesForAttribute:kODAttributeTypeMetaRecordName error:&error];
    if (error != nil && !isMissingAttribute(error)) {
        QVSLogger::debug("The directory cannot read the meta record name of \"%s\": %s", userName.c_str(),
                         reasonOf(error).c_str());
        return Value();
    }
    // nil when the record has no such attribute: no names.
    const Value names = valueOfCFType((__bridge CFTypeRef)values);
    DictionaryRef fact = makeDictionary();
    fact->set("metaRecordName", names.isArray() ? names : Value(makeArray()));
    return fact;
}

Value directoryUserFactOf(const std::string& userName) {
    const OwnedCFReference<CFStringRef> recordName = cfStringOfText(userName);
    if (!recordName) {
        QVSLogger::debug("A user name that is not UTF-8 text is not looked up in the directory.");
        return Value();
    }
    ODRecord* record = firstUserRecord((__bridge NSString*)recordName.get(), userName);
    return record == nil ? Value() : metaRecordNameFact(record, userName);
}

}  // namespace

Value directoryUserFact(const std::string& userName) {
    Value fact;
    @autoreleasepool {
        @try {
            fact = directoryUserFactOf(userName);
        } @catch (NSException* exception) {
            const std::string reason = stringOfCFString((__bridge CFTypeRef)[exception reason]).value_or("");
            QVSLogger::warning("OpenDirectory failed while looking up the user \"%s\": %s", userName.c_str(),
                               reason.c_str());
            fact = Value();
        }
    }
    return fact;
}

}  // namespace tov
