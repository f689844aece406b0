#pragma once

#include <kestrelid/Bitmap.h>
#include <kestrelid/CameraControls.h>
#include <kestrelid/CameraOptions.h>
#include <kestrelid/CameraStatus.h>
#include <kestrelid/DispatchQueue.h>
#include <kestrelid/Export.h>
#include <kestrelid/Image.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kestrelid {

/// What stands between CameraManager and the machine's cameras. Nothing here throws.

/// Why a device, an input or a photo could not be had: one line. Holds nothing of any picture.
struct CaptureError {
    std::string description;
};

/// Camera permission.
enum class AuthorizationStatus : std::uint8_t {
    notDetermined = 0,  ///< asking for access shows the person a question
    restricted = 1,     ///< nobody may grant it
    denied = 2,
    authorized = 3,
};

/// Whether this program may use cameras. Thread: any.
class KESTRELID_EXPORT CameraAuthorization {
public:
    virtual ~CameraAuthorization();

    /// Asks nobody. Takes milliseconds.
    [[nodiscard]] virtual AuthorizationStatus status() = 0;

    /// Asks the person if the status is notDetermined. Returns at once. completion: exactly once,
    /// later, on any thread.
    virtual void requestAccess(std::function<void(bool granted)> completion) = 0;
};

/// One camera, or a file that stands for one.
class KESTRELID_EXPORT CaptureDevice {
public:
    virtual ~CaptureDevice();

    /// For a person. UTF-8.
    [[nodiscard]] virtual std::string name() const = 0;

    /// How its frames must be turned to stand upright. Frames are delivered as the sensor sees
    /// them; photos carry it in their file.
    [[nodiscard]] virtual Orientation orientation() const = 0;

    /// A camera that looks at its user: previews are mirrored left to right, photos are not.
    [[nodiscard]] virtual bool isMirrored() const = 0;
};

/// A device that was opened for a session.
class KESTRELID_EXPORT CaptureInput {
public:
    virtual ~CaptureInput();
};

/// Common to the two outputs, for CaptureSession alone.
class KESTRELID_EXPORT CaptureOutput {
public:
    virtual ~CaptureOutput();
};

/// The pixels of a frame that the device still owns.
class KESTRELID_EXPORT PixelBuffer {
public:
    virtual ~PixelBuffer();

    /// Copies the whole extent into a bitmap of BGRA8, rows as the sensor sees them. Returns
    /// nothing if no memory set aside for frames is free.
    [[nodiscard]] virtual std::optional<Bitmap> render() const = 0;
};

/// One frame, valid during the call that delivers it.
class KESTRELID_EXPORT SampleBuffer {
public:
    virtual ~SampleBuffer();

    /// Null if the frame has no pixels.
    [[nodiscard]] virtual const PixelBuffer* imageBuffer() const = 0;
};

/// Gets frames.
class KESTRELID_EXPORT SampleBufferDelegate {
public:
    virtual ~SampleBufferDelegate();

    /// Thread: the queue it was set with.
    virtual void didOutput(const SampleBuffer& sampleBuffer) = 0;
};

/// The four-character code "BGRA": 32 bits a pixel.
inline constexpr std::uint32_t kPixelFormat32Bgra = 0x42475241;

/// How frames are wanted.
struct VideoSettings {
    std::uint32_t pixelFormat = kPixelFormat32Bgra;
};

/// Gives the frames of a running session to its delegate. A frame that arrives while the queue
/// still works on an earlier one is dropped. Thread: session queue.
class KESTRELID_EXPORT VideoDataOutput : public CaptureOutput {
public:
    /// The format of the frames. An output delivers nothing in a format that it does not know; each
    /// knows kPixelFormat32Bgra.
    virtual void setVideoSettings(const VideoSettings& settings) = 0;

    /// Replaces the former delegate. queue: serial.
    virtual void setSampleBufferDelegate(std::weak_ptr<SampleBufferDelegate> delegate,
                                         std::shared_ptr<DispatchQueue> queue) = 0;
};

/// Codecs of photos, as four-character codes.
inline constexpr const char* kPhotoCodecHevc = "hvc1";
inline constexpr const char* kPhotoCodecJpeg = "jpeg";

enum class FlashMode : std::uint8_t { off, on, automatic };

/// The size of a photo.
struct PhotoDimensions {
    int width = 0;  ///< pixels
    int height = 0;

    friend bool operator==(const PhotoDimensions&, const PhotoDimensions&) = default;
};

/// What a photo is asked for with; what is absent is left to the output.
struct PhotoSettings {
    std::optional<std::string> codec;  ///< one of availablePhotoCodecTypes()
    std::optional<FlashMode> flashMode;
    PhotoDimensions maxPhotoDimensions;
    /// The delegate also takes CapturedPhoto::image, where that spares making a file.
    bool acceptsImage = false;
};

/// A photo as the camera gave it.
struct CapturedPhoto {
    /// The photo as a file of its codec, orientation included. Empty if there is none.
    std::optional<std::vector<std::byte>> fileDataRepresentation;
    /// The photo without a file, as the sensor gave its pixels. Only where the settings accept it.
    std::optional<Image> image{};
};

/// Gets one photo.
class KESTRELID_EXPORT PhotoCaptureDelegate {
public:
    virtual ~PhotoCaptureDelegate();

    /// Thread: any.
    virtual void didFinishProcessingPhoto(const CapturedPhoto& photo,
                                          const std::optional<CaptureError>& error) = 0;
};

/// From an input to an output of one session.
struct CaptureConnection {
    bool isEnabled = false;
};

/// Takes still photos while its session runs. Thread: session queue.
class KESTRELID_EXPORT PhotoOutput : public CaptureOutput {
public:
    /// Empty before the output and an input were added to a session, and after the device has gone.
    [[nodiscard]] virtual std::vector<CaptureConnection> connections() const = 0;

    /// Best first. Empty: the output chooses.
    [[nodiscard]] virtual std::vector<std::string> availablePhotoCodecTypes() const = 0;

    /// The modes that photos may ask for.
    [[nodiscard]] virtual std::vector<FlashMode> supportedFlashModes() const = 0;

    /// The largest still of the device, of those that it gives within a second.
    [[nodiscard]] virtual PhotoDimensions maxPhotoDimensions() const = 0;

    /// Returns at once. The delegate is held until it has been called, exactly once, within 3 s,
    /// whatever becomes of the device or the session. Several requests may be in flight; they are
    /// answered in order.
    virtual void capturePhoto(const PhotoSettings& settings,
                              std::shared_ptr<PhotoCaptureDelegate> delegate) = 0;
};

/// Gets the frames of a session to show them. Held weakly by the session.
class KESTRELID_EXPORT PreviewSurface {
public:
    virtual ~PreviewSurface();

    /// frame: BGRA8 as the sensor sees it, shared with the device: release it once the next one has
    /// come. orientation, isMirrored: as the device has them; turn first, then mirror. Thread: any,
    /// one call at a time. Must return at once.
    virtual void show(const Bitmap& frame, Orientation orientation, bool isMirrored) = 0;
};

enum class SessionPreset : std::uint8_t {
    photo,  ///< the largest stills, with frames of about 1280x720 for showing and detecting
};

/// One device's way to its outputs. Releasing it stops it, waits for 20 ms at most, and lets
/// the device go within a second.
/// Thread: session queue, but isRunning(), status(), controls() and addPreviewSurface(): any.
class KESTRELID_EXPORT CaptureSession {
public:
    virtual ~CaptureSession();

    /// Changes between the two calls take effect together, at commitConfiguration().
    virtual void beginConfiguration() = 0;
    /// Ends what beginConfiguration() began.
    virtual void commitConfiguration() = 0;
    /// What the session is to be good at. A session is made for `photo`, the only preset, so an
    /// adapter may have nothing to change here.
    virtual void setSessionPreset(SessionPreset preset) = 0;

    /// False if it already has an input of another device that is still there. A session may also
    /// refuse the device that it has; one that takes it runs on undisturbed.
    [[nodiscard]] virtual bool canAddInput(const std::shared_ptr<CaptureInput>& input) const = 0;
    /// Call it only if canAddInput() is true.
    virtual void addInput(std::shared_ptr<CaptureInput> input) = 0;

    /// False if it already has an output of that kind.
    [[nodiscard]] virtual bool canAddOutput(const std::shared_ptr<CaptureOutput>& output) const = 0;
    /// Call it only if canAddOutput() is true.
    virtual void addOutput(std::shared_ptr<CaptureOutput> output) = 0;

    /// Returns once frames flow or the device has failed, within 2 s. Does nothing while running.
    virtual void startRunning() = 0;

    /// True from a successful start until the session is released or the device is lost: unplugged,
    /// failed, or without a frame for 1.5 s. A session may open a lost device again by itself, and
    /// runs then; otherwise an input must be added and the session started again.
    [[nodiscard]] virtual bool isRunning() const = 0;

    /// What the device is doing. By default only whether the session is running.
    [[nodiscard]] virtual CameraStatus status() const;

    /// Calls observer after each change of status() and controls() until the session is released;
    /// replaces the former one. By default nothing is told. Thread of observer: any, one call at a
    /// time; it must return at once, and must not release the session.
    virtual void observeStatus(std::function<void()> observer);

    /// Goes on with another device in the place of the present one: lets that go, within a second,
    /// and then waits as startRunning() does. With the device that it has already nothing happens.
    /// False, with nothing changed, if the session cannot do that, as by default. A device that
    /// then does not open is told by status().
    [[nodiscard]] virtual bool replaceInput(std::shared_ptr<CaptureInput> input);

    /// What can be changed of the device that runs. Waits for nothing. By default nothing.
    [[nodiscard]] virtual std::vector<CameraControlStatus> controls() const;

    /// Changes what controls() names, later; a value outside 0 to 1 counts as its nearest end, and
    /// none leaves the choice to the camera. What the device has not is ignored.
    virtual void setControl(CameraControl control, std::optional<double> value);

    /// Shows its frames on surface from now on, for as long as the surface lives.
    virtual void addPreviewSurface(std::weak_ptr<PreviewSurface> surface) = 0;
};

/// The machine's cameras. Makes what belongs together: sessions take only inputs and outputs of
/// their own platform. Thread: any.
class KESTRELID_EXPORT CapturePlatform {
public:
    virtual ~CapturePlatform();

    /// A session without inputs and outputs.
    [[nodiscard]] virtual std::shared_ptr<CaptureSession> makeSession() = 0;
    /// For one session.
    [[nodiscard]] virtual std::shared_ptr<PhotoOutput> makePhotoOutput() = 0;
    /// For one session.
    [[nodiscard]] virtual std::shared_ptr<VideoDataOutput> makeVideoDataOutput() = 0;

    /// Null if there is no camera.
    [[nodiscard]] virtual std::shared_ptr<CaptureDevice> defaultVideoDevice() = 0;

    /// The one of that name; null if it is not there. By default the default one alone is known.
    [[nodiscard]] virtual std::shared_ptr<CaptureDevice> videoDevice(const std::string& name);

    /// Those that are there now, best first. Takes seconds where the desktop hangs. By default
    /// none is told.
    [[nodiscard]] virtual std::vector<CameraDescription> cameras();

    /// Calls observer after cameras() has changed, for as long as the result lives. By default
    /// nothing is told. Takes as long as cameras(). Thread of observer: any; it must return at
    /// once.
    [[nodiscard]] virtual std::shared_ptr<const void>
    observeCameras(std::function<void()> observer);

    /// device: of this platform.
    [[nodiscard]] virtual std::variant<std::shared_ptr<CaptureInput>, CaptureError>
    makeInput(std::shared_ptr<CaptureDevice> device) = 0;
};

}  // namespace kestrelid
