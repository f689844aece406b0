<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" sourcelanguage="en">
<context>
    <name>CameraControls</name>
    <message>
        <source>Use a picture</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Light</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch camera</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CameraList</name>
    <message>
        <source>Cameras</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CameraStatePanel</name>
    <message>
        <source>The camera was disconnected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Another program uses the camera</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This program may not use the camera</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No camera was found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The camera “%1” was not found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file “%1” was not found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file “%1” cannot be shown</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The camera does not start</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plug it in again. It comes back by itself.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close that program. The camera then starts by itself.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try again, and allow it when you are asked.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Allow it in the settings of this device, under privacy, or ask whoever looks after the device.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connect the camera. It starts by itself.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It was chosen in place of a camera. Check its name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It was chosen in place of a camera, but is no picture or video that can be opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is tried again by itself. If that does not help, unplug the camera and plug it in again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Trying again…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose another camera</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use a picture</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DocumentScannerView</name>
    <message>
        <source>Scan your passport</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Live camera picture</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Camera access is required</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Take photo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Camera is not ready</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ready to take a photo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Passport in view</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ImagePreviewView</name>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Photo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Image not provided</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Retake</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>JudgingPage</name>
    <message>
        <source>Photo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Checking the photo...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This takes longer than usual.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PagePhoto</name>
    <message>
        <source>Photo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plus enlarges it, minus shows more of it</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PassportScan</name>
    <message>
        <source>It is not a file on this machine.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is not a picture of a known format.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is damaged, too large, or may not be read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is not enough memory for it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Is everything readable?</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PhotoFailedPage</name>
    <message>
        <source>The picture could not be opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The photo could not be checked.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The photo could not be taken.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use a picture</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScannerHelp</name>
    <message>
        <source>Opening the picture…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>That is not a file on this device</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>That file is not a picture</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>That picture cannot be opened</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is not enough memory for that picture</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Drop the picture to use it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Taking a photo. Hold still.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The camera is starting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Passport in view</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Place the passport&apos;s photo page in the frame</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move closer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move back a little</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep the whole page in the frame</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hold still</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Turn on the light</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>More light is needed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tilt the page to avoid the reflection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Taking a photo. Hold still. Press Escape to cancel.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VerdictPage</name>
    <message>
        <source>No passport was recognised in this photo.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This is a passport; its machine-readable lines were checked.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This is a passport.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Make more light, or go to a brighter place.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Have the whole page in the picture, on a plain background.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hold the camera closer, so that the page fills the picture.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hold the camera further away, so that all edges of the page are seen.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tilt the page or the lamp, so that nothing is reflected.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hold the camera still until the photo is taken.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open the passport at the page with the photo.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Have the lines with many &lt; at the foot of the page in the picture.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hold the camera closer to the lines at the foot of the page.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hold still, and keep fingers and reflections off the lines at the foot of the page.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Have the lines at the foot of the page whole in the picture.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Take the photo again in even light: the lines at the foot of the page were not read beyond doubt.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Surname</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Given names</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Document number</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nationality</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Issuing state</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Date of birth</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sex</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Date of expiry</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Female</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Male</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not specified</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To have its machine-readable lines checked too:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What helps:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>please check</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hide details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Confidence: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>These count the outline and the printed words. The machine-readable lines are read on their own.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Text that was read:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Continue</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Scan again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Continue anyway</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>kestrelid::demo::DemoSession</name>
    <message>
        <source>scanning</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>preview</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>judging</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>result</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Kestrelid demo: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Thank you. The next passport can be scanned.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No camera was found: this is a drawn passport. You can drop a picture here instead.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>kestrelid::scanner::PhotoImport</name>
    <message>
        <source>Pictures (%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use a picture</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
