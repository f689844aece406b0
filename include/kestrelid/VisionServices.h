#pragma once

#include <kestrelid/Bitmap.h>
#include <kestrelid/Export.h>
#include <kestrelid/MachineReadableZone.h>
#include <kestrelid/NormalizedGeometry.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kestrelid {

/// Which outlines are wanted.
struct RectangleRequest {
    int maximumObservations = 5;
    float minimumConfidence = 0.4f;   ///< 0..1
    float minimumAspectRatio = 0.5f;  ///< width / height of the quadrilateral, in pixels
    float maximumAspectRatio = 2.2f;
};

/// A quadrilateral that may be the outline of a document.
struct RectangleObservation {
    NormalizedRect boundingBox;
    std::array<NormalizedPoint, 4>
        corners;  ///< as seen in the bitmap: top left, top right, bottom right, bottom left
    float confidence = 0.0f;  ///< 0..1
};

/// Accuracy against speed.
enum class RecognitionLevel { fast, accurate };

/// How text is to be read.
struct TextRequest {
    RecognitionLevel recognitionLevel = RecognitionLevel::accurate;
    bool usesLanguageCorrection = true;
    std::vector<std::string> recognitionLanguages = {"en"};  ///< ISO 639-1

    /// Asked once for each line as it is read, in any order, one call at a time, on any thread:
    /// true says that the rest need not be read. Empty: read everything.
    std::function<bool(std::string_view line)> isEnough;
};

/// One reading of a line.
struct RecognizedText {
    std::string string;       ///< UTF-8
    float confidence = 0.0f;  ///< 0..1
};

/// One line of text with its readings, best first.
class KESTRELID_EXPORT TextObservation {
public:
    /// candidates: best first.
    TextObservation(NormalizedRect boundingBox, std::vector<RecognizedText> candidates);

    /// Around the line.
    [[nodiscard]] const NormalizedRect& boundingBox() const noexcept { return boundingBox_; }

    /// The best readings, at most maximumCount of them; empty where there is none.
    [[nodiscard]] std::vector<RecognizedText> topCandidates(int maximumCount) const;

private:
    NormalizedRect boundingBox_;
    std::vector<RecognizedText> candidates_;
};

/// Why a request gave nothing.
struct RequestError {
    /// Which of the two failures it is: the console names them differently.
    enum class Kind : std::uint8_t {
        notPerformed,  ///< it could not be carried out: a library or model is missing, say
        reported,      ///< it was carried out, and reported an error meanwhile
    };

    /// One line that says what to do about it where something can be done (a missing library: the
    /// package or command that brings it). Holds nothing that was read off a picture.
    std::string description;
    Kind kind = Kind::notPerformed;
};

/// What was found, in no particular order; empty: nothing.
using RectangleResult = std::variant<std::vector<RectangleObservation>, RequestError>;

/// What was read, in reading order: top to bottom, within a row left to right; empty: nothing.
using TextResult = std::variant<std::vector<TextObservation>, RequestError>;

/// Finds document outlines. Duties of an implementation: works on the calling thread; keeps nothing
/// of the bitmap after the return; several calls may run at once on one object.
class KESTRELID_EXPORT RectangleService {
public:
    virtual ~RectangleService();

    /// The outlines in bitmap that request asks for.
    [[nodiscard]] virtual RectangleResult perform(const Bitmap& bitmap,
                                                  const RectangleRequest& request) = 0;
};

/// Reads text. Duties as for RectangleService; text is read whichever of the four turns the bitmap
/// stands in.
class KESTRELID_EXPORT TextService {
public:
    virtual ~TextService();

    /// The lines in bitmap.
    [[nodiscard]] virtual TextResult perform(const Bitmap& bitmap, const TextRequest& request) = 0;
};

/// Where zones are looked for.
struct ZoneRequest {
    /// Of documents, best first: they tell how a page is turned and tilted. Empty: unknown.
    std::vector<RectangleObservation> outlines{};
};

/// The machine-readable zones that were found, from the top of the picture down; empty: none.
using ZoneResult = std::variant<std::vector<ZoneReading>, RequestError>;

/// Reads machine-readable zones, whichever way up they stand. Duties as for RectangleService. It
/// gives what it saw, character by character, and neither corrects nor judges it: parseZone() does.
class KESTRELID_EXPORT ZoneService {
public:
    virtual ~ZoneService();

    /// The zones in bitmap.
    [[nodiscard]] virtual ZoneResult perform(const Bitmap& bitmap, const ZoneRequest& request) = 0;
};

}  // namespace kestrelid
