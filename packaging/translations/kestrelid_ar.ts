<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar" sourcelanguage="en">
<context>
    <name>CameraControls</name>
    <message>
        <source>Use a picture</source>
        <translation>استخدام صورة</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>الضوء</translation>
    </message>
    <message>
        <source>Switch camera</source>
        <translation>تبديل الكاميرا</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>تصغير</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>تكبير</translation>
    </message>
</context>
<context>
    <name>CameraList</name>
    <message>
        <source>Cameras</source>
        <translation>الكاميرات</translation>
    </message>
</context>
<context>
    <name>CameraStatePanel</name>
    <message>
        <source>The camera was disconnected</source>
        <translation>انقطع اتصال الكاميرا</translation>
    </message>
    <message>
        <source>Another program uses the camera</source>
        <translation>يستخدم برنامج آخر الكاميرا</translation>
    </message>
    <message>
        <source>This program may not use the camera</source>
        <translation>لا يُسمح لهذا البرنامج باستخدام الكاميرا</translation>
    </message>
    <message>
        <source>No camera was found</source>
        <translation>لم يُعثر على كاميرا</translation>
    </message>
    <message>
        <source>The camera “%1” was not found</source>
        <translation>لم يُعثر على الكاميرا «%1»</translation>
    </message>
    <message>
        <source>The file “%1” was not found</source>
        <translation>لم يُعثر على الملف «%1»</translation>
    </message>
    <message>
        <source>The file “%1” cannot be shown</source>
        <translation>لا يمكن عرض الملف «%1»</translation>
    </message>
    <message>
        <source>The camera does not start</source>
        <translation>تعذّر تشغيل الكاميرا</translation>
    </message>
    <message>
        <source>Plug it in again. It comes back by itself.</source>
        <translation>أعد توصيلها، وستعود إلى العمل تلقائيًا.</translation>
    </message>
    <message>
        <source>Close that program. The camera then starts by itself.</source>
        <translation>أغلق ذلك البرنامج، وستعمل الكاميرا بعدها تلقائيًا.</translation>
    </message>
    <message>
        <source>Try again, and allow it when you are asked.</source>
        <translation>أعد المحاولة، ووافق عندما يُطلب منك ذلك.</translation>
    </message>
    <message>
        <source>Allow it in the settings of this device, under privacy, or ask whoever looks after the device.</source>
        <translation>اسمح بذلك في إعدادات الخصوصية على هذا الجهاز، أو اطلب ذلك ممن يتولى صيانته.</translation>
    </message>
    <message>
        <source>Connect the camera. It starts by itself.</source>
        <translation>صِل الكاميرا، وستعمل تلقائيًا.</translation>
    </message>
    <message>
        <source>It was chosen in place of a camera. Check its name.</source>
        <translation>اختير هذا الملف بدلًا من كاميرا. تحقق من اسمه.</translation>
    </message>
    <message>
        <source>It was chosen in place of a camera, but is no picture or video that can be opened.</source>
        <translation>اختير هذا الملف بدلًا من كاميرا، لكنه ليس صورة أو مقطع فيديو يمكن فتحه.</translation>
    </message>
    <message>
        <source>It is tried again by itself. If that does not help, unplug the camera and plug it in again.</source>
        <translation>تُعاد المحاولة تلقائيًا. إن لم يُجدِ ذلك فافصل الكاميرا ثم أعد توصيلها.</translation>
    </message>
    <message>
        <source>Trying again…</source>
        <translation>تُعاد المحاولة…</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>إعادة المحاولة</translation>
    </message>
    <message>
        <source>Choose another camera</source>
        <translation>اختيار كاميرا أخرى</translation>
    </message>
    <message>
        <source>Use a picture</source>
        <translation>استخدام صورة</translation>
    </message>
</context>
<context>
    <name>DocumentScannerView</name>
    <message>
        <source>Scan your passport</source>
        <translation>امسح جواز سفرك</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>إغلاق</translation>
    </message>
    <message>
        <source>Live camera picture</source>
        <translation>صورة الكاميرا المباشرة</translation>
    </message>
    <message>
        <source>Camera access is required</source>
        <translation>يلزم السماح باستخدام الكاميرا</translation>
    </message>
    <message>
        <source>Take photo</source>
        <translation>التقاط صورة</translation>
    </message>
    <message>
        <source>Camera is not ready</source>
        <translation>الكاميرا ليست جاهزة</translation>
    </message>
    <message>
        <source>Ready to take a photo</source>
        <translation>الكاميرا جاهزة لالتقاط صورة</translation>
    </message>
    <message>
        <source>Passport in view</source>
        <translation>جواز السفر ظاهر</translation>
    </message>
</context>
<context>
    <name>ImagePreviewView</name>
    <message>
        <source>Close</source>
        <translation>إغلاق</translation>
    </message>
    <message>
        <source>Photo</source>
        <translation>الصورة</translation>
    </message>
    <message>
        <source>Image not provided</source>
        <translation>لا توجد صورة</translation>
    </message>
    <message>
        <source>Retake</source>
        <translation>إعادة الالتقاط</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>تأكيد</translation>
    </message>
</context>
<context>
    <name>JudgingPage</name>
    <message>
        <source>Photo</source>
        <translation>الصورة</translation>
    </message>
    <message>
        <source>Checking the photo...</source>
        <translation>جارٍ التحقق من الصورة...</translation>
    </message>
    <message>
        <source>This takes longer than usual.</source>
        <translation>يستغرق هذا وقتًا أطول من المعتاد.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>إلغاء</translation>
    </message>
</context>
<context>
    <name>PagePhoto</name>
    <message>
        <source>Photo</source>
        <translation>الصورة</translation>
    </message>
    <message>
        <source>Plus enlarges it, minus shows more of it</source>
        <translation>علامة الجمع تكبّرها، وعلامة الطرح تُظهر المزيد منها</translation>
    </message>
</context>
<context>
    <name>PassportScan</name>
    <message>
        <source>It is not a file on this machine.</source>
        <translation>ليس ملفًا على هذا الجهاز.</translation>
    </message>
    <message>
        <source>It is not a picture of a known format.</source>
        <translation>ليس صورة بصيغة معروفة.</translation>
    </message>
    <message>
        <source>It is damaged, too large, or may not be read.</source>
        <translation>الملف تالف، أو كبير جدًا، أو لا يُسمح بقراءته.</translation>
    </message>
    <message>
        <source>There is not enough memory for it.</source>
        <translation>لا توجد ذاكرة كافية له.</translation>
    </message>
    <message>
        <source>Is everything readable?</source>
        <translation>هل كل شيء مقروء؟</translation>
    </message>
</context>
<context>
    <name>PhotoFailedPage</name>
    <message>
        <source>The picture could not be opened.</source>
        <translation>تعذّر فتح الصورة.</translation>
    </message>
    <message>
        <source>The photo could not be checked.</source>
        <translation>تعذّر التحقق من الصورة.</translation>
    </message>
    <message>
        <source>The photo could not be taken.</source>
        <translation>تعذّر التقاط الصورة.</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>إعادة المحاولة</translation>
    </message>
    <message>
        <source>Use a picture</source>
        <translation>استخدام صورة</translation>
    </message>
</context>
<context>
    <name>ScannerHelp</name>
    <message>
        <source>Opening the picture…</source>
        <translation>جارٍ فتح الصورة…</translation>
    </message>
    <message>
        <source>That is not a file on this device</source>
        <translation>هذا ليس ملفًا على هذا الجهاز</translation>
    </message>
    <message>
        <source>That file is not a picture</source>
        <translation>هذا الملف ليس صورة</translation>
    </message>
    <message>
        <source>That picture cannot be opened</source>
        <translation>لا يمكن فتح هذه الصورة</translation>
    </message>
    <message>
        <source>There is not enough memory for that picture</source>
        <translation>لا توجد ذاكرة كافية لهذه الصورة</translation>
    </message>
    <message>
        <source>Drop the picture to use it</source>
        <translation>أفلِت الصورة لاستخدامها</translation>
    </message>
    <message>
        <source>Taking a photo. Hold still.</source>
        <translation>جارٍ التقاط صورة. ثبّت يدك.</translation>
    </message>
    <message>
        <source>The camera is starting</source>
        <translation>جارٍ تشغيل الكاميرا</translation>
    </message>
    <message>
        <source>Passport in view</source>
        <translation>جواز السفر ظاهر</translation>
    </message>
    <message>
        <source>Place the passport&apos;s photo page in the frame</source>
        <translation>ضع صفحة الصورة في جواز السفر داخل الإطار</translation>
    </message>
    <message>
        <source>Move closer</source>
        <translation>اقترب أكثر</translation>
    </message>
    <message>
        <source>Move back a little</source>
        <translation>ابتعد قليلًا</translation>
    </message>
    <message>
        <source>Keep the whole page in the frame</source>
        <translation>أبقِ الصفحة كلها داخل الإطار</translation>
    </message>
    <message>
        <source>Hold still</source>
        <translation>ثبّت يدك</translation>
    </message>
    <message>
        <source>Turn on the light</source>
        <translation>أشعِل الضوء</translation>
    </message>
    <message>
        <source>More light is needed</source>
        <translation>يلزم مزيد من الضوء</translation>
    </message>
    <message>
        <source>Tilt the page to avoid the reflection</source>
        <translation>أمِل الصفحة لتجنّب الانعكاس</translation>
    </message>
    <message>
        <source>Taking a photo. Hold still. Press Escape to cancel.</source>
        <translation>جارٍ التقاط صورة. ثبّت يدك. اضغط Escape للإلغاء.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>إلغاء</translation>
    </message>
</context>
<context>
    <name>VerdictPage</name>
    <message>
        <source>No passport was recognised in this photo.</source>
        <translation>لم يُتعرَّف على جواز سفر في هذه الصورة.</translation>
    </message>
    <message>
        <source>This is a passport; its machine-readable lines were checked.</source>
        <translation>هذا جواز سفر، وقد جرى التحقق من سطوره المقروءة آليًا.</translation>
    </message>
    <message>
        <source>This is a passport.</source>
        <translation>هذا جواز سفر.</translation>
    </message>
    <message>
        <source>Make more light, or go to a brighter place.</source>
        <translation>زِد الإضاءة، أو انتقل إلى مكان أكثر ضوءًا.</translation>
    </message>
    <message>
        <source>Have the whole page in the picture, on a plain background.</source>
        <translation>اجعل الصفحة كلها في الصورة، على خلفية خالية.</translation>
    </message>
    <message>
        <source>Hold the camera closer, so that the page fills the picture.</source>
        <translation>قرّب الكاميرا حتى تملأ الصفحة الصورة.</translation>
    </message>
    <message>
        <source>Hold the camera further away, so that all edges of the page are seen.</source>
        <translation>أبعِد الكاميرا حتى تظهر حوافّ الصفحة كلها.</translation>
    </message>
    <message>
        <source>Tilt the page or the lamp, so that nothing is reflected.</source>
        <translation>أمِل الصفحة أو المصباح حتى لا ينعكس شيء.</translation>
    </message>
    <message>
        <source>Hold the camera still until the photo is taken.</source>
        <translation>ثبّت الكاميرا إلى أن تُلتقط الصورة.</translation>
    </message>
    <message>
        <source>Open the passport at the page with the photo.</source>
        <translation>افتح جواز السفر على صفحة الصورة.</translation>
    </message>
    <message>
        <source>Have the lines with many &lt; at the foot of the page in the picture.</source>
        <translation>أظهِر في الصورة السطور التي في أسفل الصفحة وفيها علامات &lt; كثيرة.</translation>
    </message>
    <message>
        <source>Hold the camera closer to the lines at the foot of the page.</source>
        <translation>قرّب الكاميرا من السطور التي في أسفل الصفحة.</translation>
    </message>
    <message>
        <source>Hold still, and keep fingers and reflections off the lines at the foot of the page.</source>
        <translation>ثبّت يدك، وأبعِد الأصابع والانعكاسات عن السطور التي في أسفل الصفحة.</translation>
    </message>
    <message>
        <source>Have the lines at the foot of the page whole in the picture.</source>
        <translation>أظهِر السطور التي في أسفل الصفحة كاملةً في الصورة.</translation>
    </message>
    <message>
        <source>Take the photo again in even light: the lines at the foot of the page were not read beyond doubt.</source>
        <translation>أعد التقاط الصورة في إضاءة متساوية: لم تُقرأ السطور التي في أسفل الصفحة قراءةً مؤكدة.</translation>
    </message>
    <message>
        <source>Surname</source>
        <translation>اللقب</translation>
    </message>
    <message>
        <source>Given names</source>
        <translation>الأسماء</translation>
    </message>
    <message>
        <source>Document number</source>
        <translation>رقم الوثيقة</translation>
    </message>
    <message>
        <source>Nationality</source>
        <translation>الجنسية</translation>
    </message>
    <message>
        <source>Issuing state</source>
        <translation>دولة الإصدار</translation>
    </message>
    <message>
        <source>Date of birth</source>
        <translation>تاريخ الميلاد</translation>
    </message>
    <message>
        <source>Sex</source>
        <translation>الجنس</translation>
    </message>
    <message>
        <source>Date of expiry</source>
        <translation>تاريخ الانتهاء</translation>
    </message>
    <message>
        <source>Female</source>
        <translation>أنثى</translation>
    </message>
    <message>
        <source>Male</source>
        <translation>ذكر</translation>
    </message>
    <message>
        <source>Not specified</source>
        <translation>غير محدد</translation>
    </message>
    <message>
        <source>To have its machine-readable lines checked too:</source>
        <translation>للتحقق من سطوره المقروءة آليًا أيضًا:</translation>
    </message>
    <message>
        <source>What helps:</source>
        <translation>لنتيجة أفضل:</translation>
    </message>
    <message>
        <source>please check</source>
        <translation>يُرجى التحقق</translation>
    </message>
    <message>
        <source>Hide details</source>
        <translation>إخفاء التفاصيل</translation>
    </message>
    <message>
        <source>Show details</source>
        <translation>إظهار التفاصيل</translation>
    </message>
    <message>
        <source>Confidence: %1</source>
        <translation>درجة الثقة: %1</translation>
    </message>
    <message>
        <source>These count the outline and the printed words. The machine-readable lines are read on their own.</source>
        <translation>تُحسب هنا حدود الصفحة والكلمات المطبوعة، أما السطور المقروءة آليًا فتُقرأ على حدة.</translation>
    </message>
    <message>
        <source>Text that was read:</source>
        <translation>النص المقروء:</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>متابعة</translation>
    </message>
    <message>
        <source>Scan again</source>
        <translation>إعادة المسح</translation>
    </message>
    <message>
        <source>Continue anyway</source>
        <translation>المتابعة على أي حال</translation>
    </message>
</context>
<context>
    <name>kestrelid::demo::DemoSession</name>
    <message>
        <source>scanning</source>
        <translation>المسح</translation>
    </message>
    <message>
        <source>preview</source>
        <translation>المعاينة</translation>
    </message>
    <message>
        <source>judging</source>
        <translation>التحقق</translation>
    </message>
    <message>
        <source>result</source>
        <translation>النتيجة</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>تعذّر</translation>
    </message>
    <message>
        <source>Kestrelid demo: %1</source>
        <translation>عرض Kestrelid: %1</translation>
    </message>
    <message>
        <source>Thank you. The next passport can be scanned.</source>
        <translation>شكرًا لك. يمكن الآن مسح جواز السفر التالي.</translation>
    </message>
    <message>
        <source>No camera was found: this is a drawn passport. You can drop a picture here instead.</source>
        <translation>لم يُعثر على كاميرا، وهذا جواز سفر مرسوم. يمكنك إفلات صورة هنا بدلًا منه.</translation>
    </message>
</context>
<context>
    <name>kestrelid::scanner::PhotoImport</name>
    <message>
        <source>Pictures (%1)</source>
        <translation>الصور (%1)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>كل الملفات (*)</translation>
    </message>
    <message>
        <source>Use a picture</source>
        <translation>استخدام صورة</translation>
    </message>
</context>
</TS>
