#pragma once

// Passes JSON text through with changes that leave both its validity and the values of
// the top-level object's members as they were: every empty container nested below those
// members (or inside a top-level array) becomes the number 0, a run of such containers
// in one array becomes a single 0, and each run of blanks outside strings becomes one
// blank. The JSON parser keeps a record of the characters since its last string, number
// or literal; without this, a document of nothing but "{}," or blanks would make that
// record as large as the document, and the parser would spend its time on filler. An
// empty container deeper than the parser's depth limit is kept, so that the parser still
// refuses the document.

#include <streambuf>
#include <string>
#include <vector>

namespace tov {

class CompactJsonInputBuffer : public std::streambuf {
public:
    CompactJsonInputBuffer(std::streambuf& source, int maximumDepth);

protected:
    int_type underflow() override;

private:
    // Appends what one input character gives to output_.
    void pass(char character);
    void passInString(char character);
    void passOutsideString(char character);
    // The container begun by pendingOpener_ is empty: it becomes a 0, or nothing when it
    // follows a 0 and a comma in the same array.
    void replaceEmptyContainer();
    // Emits an opener whose container turned out not to be empty.
    void openPendingContainer();
    void openContainer(char opener);
    void closeContainer(char closer);
    void emitHeldComma();
    void emitPendingBlank();
    // Emits what is still held back when the input ends.
    void finish();
    // An empty container here is not one of the top-level object's own member values and
    // lies within the depth limit.
    bool isReplaceableHere() const;
    bool isInArray() const { return !openers_.empty() && openers_.back() == '['; }

    std::streambuf& source_;
    const std::size_t maximumDepth_;
    std::string output_;
    std::vector<char> openers_;  // the open containers, outermost first
    bool inString_ = false;
    bool escaped_ = false;
    bool pendingBlank_ = false;
    char pendingOpener_ = 0;            // an opener not yet known to begin an empty container
    bool afterReplacementInArray_ = false;  // the last thing emitted is a 0 in an array
    bool heldComma_ = false;            // a comma after such a 0, held back
};

}  // namespace tov
