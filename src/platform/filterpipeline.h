#pragma once

// The interfaces of the Windows print filter pipeline (XPSDrv), as filterpipeline.h of the Windows Driver Kit
// declares them; MinGW has no such header. Slot order and identifiers are the platform's. Every method
// returns an HRESULT unless it says otherwise, and every interface handed out is referenced for the caller.

#include "platform/windows.h"

#include "platform/guid.h"

struct IImgErrorInfo;

// The answer of GetPrintTicket, GetThumbnail and the like for a part that is not there.
inline constexpr HRESULT E_ELEMENT_NOT_FOUND = static_cast<HRESULT>(0x80070490L);

enum EXpsCompressionOptions {
    Compression_NotCompressed = 0,
    Compression_Normal = 1,
    Compression_Small = 2,
    Compression_Fast = 3,
};

enum EXpsFontOptions {
    Font_Normal = 0,
    Font_Obfusticate = 1,  // the platform's spelling
};

enum EXpsFontRestriction {
    Xps_Restricted_Font_Installable = 0,
    Xps_Restricted_Font_NoEmbedding = 2,
    Xps_Restricted_Font_PreviewPrint = 4,
    Xps_Restricted_Font_Editable = 8,
};

enum EXpsJobConsumption {
    XpsJob_DocumentSequenceAdded = 0,
    XpsJob_FixedDocumentAdded = 1,
    XpsJob_FixedPageAdded = 2,
};

struct PLATFORM_UUID("aa3e4910-5889-4681-91ef-823ad4ed4e44") IPrintPipelineManagerControl : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE RequestShutdown(HRESULT reason, IImgErrorInfo* pErrorInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE FilterFinished() = 0;
};

// The out pointer is an interface of the kind that the pipeline configuration declares for the filter,
// referenced for the caller.
struct PLATFORM_UUID("4daf1e69-81fd-462d-940f-8cd3ddf56fca") IInterFilterCommunicator : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE RequestReader(void** ppReader) = 0;
    virtual HRESULT STDMETHODCALLTYPE RequestWriter(void** ppWriter) = 0;
};

// GetProperty gives the caller a copy of its own.
struct PLATFORM_UUID("8b8c99dc-7892-4a95-8a04-57422e9fbb47") IPrintPipelinePropertyBag : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE AddProperty(const wchar_t* name, const VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProperty(const wchar_t* name, VARIANT* value) = 0;
    virtual BOOL STDMETHODCALLTYPE DeleteProperty(const wchar_t* name) = 0;
};

// ShutdownOperation stands before StartOperation in the vtable.
struct PLATFORM_UUID("cdb62fc0-8bed-434e-86fb-a2cae55f19ea") IPrintPipelineFilter : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE InitializeFilter(IInterFilterCommunicator* pICommunicator,
                                                       IPrintPipelinePropertyBag* pIPropertyBag,
                                                       IPrintPipelineManagerControl* pIPipelineControl) = 0;
    virtual HRESULT STDMETHODCALLTYPE ShutdownOperation() = 0;
    virtual HRESULT STDMETHODCALLTYPE StartOperation() = 0;
};

// ReadBytes need not fill the buffer; a short read without the end flag is not the end. pNewPosition may be
// null.
struct PLATFORM_UUID("4d47a67c-66cc-4430-850e-daf466fe5bc4") IPrintReadStream : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Seek(LONGLONG offset, DWORD origin, ULONGLONG* pNewPosition) = 0;
    virtual HRESULT STDMETHODCALLTYPE ReadBytes(void* pBuffer, ULONG cbWanted, ULONG* pcbRead,
                                                BOOL* pEndOfFile) = 0;
};

// Close is mandatory; releasing the stream does not replace it.
struct PLATFORM_UUID("65bb7f1b-371e-4571-8ac7-912f510c1a38") IPrintWriteStream : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE WriteBytes(const void* pBuffer, ULONG cb, ULONG* pcbWritten) = 0;
    virtual void STDMETHODCALLTYPE Close() = 0;
};

struct PLATFORM_UUID("07d11ff8-1753-4873-b749-6cdaf068e4c3") IPrintWriteStreamFlush : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE FlushData() = 0;
};

struct PLATFORM_UUID("acb971e3-df8d-4fc2-bee6-0609d15f3cf9") IPrintReadStreamFactory : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream** ppStream) = 0;
};

struct PLATFORM_UUID("36d51e28-369e-43ba-a666-9540c62c3f58") IPartBase : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetUri(BSTR* pUri) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream** ppStream) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPartCompression(EXpsCompressionOptions* pCompression) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPartCompression(EXpsCompressionOptions compression) = 0;
};

struct PLATFORM_UUID("4a0f50f6-f9a2-41f0-99e7-5ae955be8e9e") IPartPrintTicket : public IPartBase {};

struct PLATFORM_UUID("63cca95b-7d18-4762-b15e-98658693d24a") IPartColorProfile : public IPartBase {};

struct PLATFORM_UUID("16cfce6d-e744-4fb3-b474-f1d54f024a01") IPartResourceDictionary : public IPartBase {};

struct PLATFORM_UUID("725f2e3c-401a-4705-9de0-fe6f1353b87f") IPartImage : public IPartBase {
    virtual HRESULT STDMETHODCALLTYPE GetImageProperties(BSTR* pContentType) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetImageContent(const wchar_t* contentType) = 0;
};

struct PLATFORM_UUID("e07fe0ab-1124-43d0-a865-e8ffb6a3ea82") IPartFont : public IPartBase {
    virtual HRESULT STDMETHODCALLTYPE GetFontProperties(BSTR* pContentType, EXpsFontOptions* pOptions) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetFontContent(const wchar_t* contentType) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetFontOptions(EXpsFontOptions options) = 0;
};

struct PLATFORM_UUID("511e025f-d6cb-43be-bf65-63fe88515a39") IPartFont2 : public IPartFont {
    virtual HRESULT STDMETHODCALLTYPE GetFontRestriction(EXpsFontRestriction* pRestriction) = 0;
};

struct PLATFORM_UUID("027ed1c9-ba39-4cc5-aa55-7ec3a0de171a") IPartThumbnail : public IPartBase {
    virtual HRESULT STDMETHODCALLTYPE GetThumbnailProperties(BSTR* pContentType) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetThumbnailContent(const wchar_t* contentType) = 0;
};

struct PLATFORM_UUID("0021d3cd-af6f-42ab-9999-14bc82a62d2e") IXpsPartIterator : public IUnknown {
    virtual void STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Current(BSTR* pUri, IUnknown** ppPart) = 0;
    virtual BOOL STDMETHODCALLTYPE IsDone() = 0;
    virtual void STDMETHODCALLTYPE Next() = 0;
};

struct PLATFORM_UUID("cc350c00-095b-42a5-bf0f-c8780edadb3c") IPartDiscardControl : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetDiscardProperties(BSTR* pUriOfSentinelPage,
                                                           BSTR* pUriOfPartToDiscard) = 0;
};

struct PLATFORM_UUID("e8d907db-62a9-4a95-abe7-e01763dd30f8") IXpsDocument : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetThumbnail(IPartThumbnail** ppThumbnail) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetThumbnail(IPartThumbnail* pThumbnail) = 0;
};

// Not an IPartBase. GetPrintTicket answers E_ELEMENT_NOT_FOUND for a part without a ticket.
struct PLATFORM_UUID("8028d181-2c32-4249-8493-1bfb22045574") IFixedDocumentSequence : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetUri(BSTR* pUri) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPrintTicket(IPartPrintTicket** ppPrintTicket) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPrintTicket(IPartPrintTicket* pPrintTicket) = 0;
};

// Not an IPartBase. GetPrintTicket answers E_ELEMENT_NOT_FOUND for a part without a ticket.
struct PLATFORM_UUID("f222ca9f-9968-4db9-81bd-abaebf15f93f") IFixedDocument : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetUri(BSTR* pUri) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPrintTicket(IPartPrintTicket** ppPrintTicket) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPrintTicket(IPartPrintTicket* pPrintTicket) = 0;
};

// GetWriteStream replaces the page's markup; the whole page is written, then the stream closed.
struct PLATFORM_UUID("3d9f6448-7e95-4cb5-94fb-0180c2883a57") IFixedPage : public IPartBase {
    virtual HRESULT STDMETHODCALLTYPE GetPrintTicket(IPartPrintTicket** ppPrintTicket) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPagePart(const wchar_t* uri, IUnknown** ppPart) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWriteStream(IPrintWriteStream** ppWriteStream) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPrintTicket(IPartPrintTicket* pPrintTicket) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPagePart(IUnknown* pPart) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteResource(const wchar_t* uri) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetXpsPartIterator(IXpsPartIterator** ppIterator) = 0;
};

// A success with a null part is the end of the document stream.
struct PLATFORM_UUID("b8cf8530-5562-47c4-ab67-b1f69ecf961e") IXpsDocumentProvider : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetXpsPart(IUnknown** ppPart) = 0;
};

struct PLATFORM_UUID("4368d8a2-4181-4a9f-b295-3d9a38bb9ba0") IXpsDocumentConsumer : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SendXpsUnknown(IUnknown* pUnknown) = 0;
    virtual HRESULT STDMETHODCALLTYPE SendXpsDocument(IXpsDocument* pXpsDocument) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    SendFixedDocumentSequence(IFixedDocumentSequence* pFixedDocumentSequence) = 0;
    virtual HRESULT STDMETHODCALLTYPE SendFixedDocument(IFixedDocument* pFixedDocument) = 0;
    virtual HRESULT STDMETHODCALLTYPE SendFixedPage(IFixedPage* pFixedPage) = 0;
    virtual HRESULT STDMETHODCALLTYPE CloseSender() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNewEmptyPart(const wchar_t* uri, REFIID iid, void** ppNewPart,
                                                      IPrintWriteStream** ppWriteStream) = 0;
};

struct PLATFORM_UUID("edc12c7c-ed40-4ea5-96a6-5e4397497a61") IPrintPipelineProgressReport : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE ReportProgress(EXpsJobConsumption consumption) = 0;
};

struct PLATFORM_UUID("9af593dd-9b02-48a8-9bad-69ace423f88b") IPrintClassObjectFactory : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetPrintClassObject(const wchar_t* printer, REFIID iid,
                                                          void** ppObject) = 0;
};

PLATFORM_INTERFACE_UUID(IPrintPipelineManagerControl, 0xaa3e4910, 0x5889, 0x4681, 0x91, 0xef, 0x82, 0x3a,
                        0xd4, 0xed, 0x4e, 0x44)
PLATFORM_INTERFACE_UUID(IInterFilterCommunicator, 0x4daf1e69, 0x81fd, 0x462d, 0x94, 0x0f, 0x8c, 0xd3, 0xdd,
                        0xf5, 0x6f, 0xca)
PLATFORM_INTERFACE_UUID(IPrintPipelinePropertyBag, 0x8b8c99dc, 0x7892, 0x4a95, 0x8a, 0x04, 0x57, 0x42, 0x2e,
                        0x9f, 0xbb, 0x47)
PLATFORM_INTERFACE_UUID(IPrintPipelineFilter, 0xcdb62fc0, 0x8bed, 0x434e, 0x86, 0xfb, 0xa2, 0xca, 0xe5, 0x5f,
                        0x19, 0xea)
PLATFORM_INTERFACE_UUID(IPrintReadStream, 0x4d47a67c, 0x66cc, 0x4430, 0x85, 0x0e, 0xda, 0xf4, 0x66, 0xfe,
                        0x5b, 0xc4)
PLATFORM_INTERFACE_UUID(IPrintWriteStream, 0x65bb7f1b, 0x371e, 0x4571, 0x8a, 0xc7, 0x91, 0x2f, 0x51, 0x0c,
                        0x1a, 0x38)
PLATFORM_INTERFACE_UUID(IPrintWriteStreamFlush, 0x07d11ff8, 0x1753, 0x4873, 0xb7, 0x49, 0x6c, 0xda, 0xf0,
                        0x68, 0xe4, 0xc3)
PLATFORM_INTERFACE_UUID(IPrintReadStreamFactory, 0xacb971e3, 0xdf8d, 0x4fc2, 0xbe, 0xe6, 0x06, 0x09, 0xd1,
                        0x5f, 0x3c, 0xf9)
PLATFORM_INTERFACE_UUID(IPartBase, 0x36d51e28, 0x369e, 0x43ba, 0xa6, 0x66, 0x95, 0x40, 0xc6, 0x2c, 0x3f, 0x58)
PLATFORM_INTERFACE_UUID(IPartPrintTicket, 0x4a0f50f6, 0xf9a2, 0x41f0, 0x99, 0xe7, 0x5a, 0xe9, 0x55, 0xbe,
                        0x8e, 0x9e)
PLATFORM_INTERFACE_UUID(IPartColorProfile, 0x63cca95b, 0x7d18, 0x4762, 0xb1, 0x5e, 0x98, 0x65, 0x86, 0x93,
                        0xd2, 0x4a)
PLATFORM_INTERFACE_UUID(IPartResourceDictionary, 0x16cfce6d, 0xe744, 0x4fb3, 0xb4, 0x74, 0xf1, 0xd5, 0x4f,
                        0x02, 0x4a, 0x01)
PLATFORM_INTERFACE_UUID(IPartImage, 0x725f2e3c, 0x401a, 0x4705, 0x9d, 0xe0, 0xfe, 0x6f, 0x13, 0x53, 0xb8,
                        0x7f)
PLATFORM_INTERFACE_UUID(IPartFont, 0xe07fe0ab, 0x1124, 0x43d0, 0xa8, 0x65, 0xe8, 0xff, 0xb6, 0xa3, 0xea, 0x82)
PLATFORM_INTERFACE_UUID(IPartFont2, 0x511e025f, 0xd6cb, 0x43be, 0xbf, 0x65, 0x63, 0xfe, 0x88, 0x51, 0x5a,
                        0x39)
PLATFORM_INTERFACE_UUID(IPartThumbnail, 0x027ed1c9, 0xba39, 0x4cc5, 0xaa, 0x55, 0x7e, 0xc3, 0xa0, 0xde, 0x17,
                        0x1a)
PLATFORM_INTERFACE_UUID(IXpsPartIterator, 0x0021d3cd, 0xaf6f, 0x42ab, 0x99, 0x99, 0x14, 0xbc, 0x82, 0xa6,
                        0x2d, 0x2e)
PLATFORM_INTERFACE_UUID(IPartDiscardControl, 0xcc350c00, 0x095b, 0x42a5, 0xbf, 0x0f, 0xc8, 0x78, 0x0e, 0xda,
                        0xdb, 0x3c)
PLATFORM_INTERFACE_UUID(IXpsDocument, 0xe8d907db, 0x62a9, 0x4a95, 0xab, 0xe7, 0xe0, 0x17, 0x63, 0xdd, 0x30,
                        0xf8)
PLATFORM_INTERFACE_UUID(IFixedDocumentSequence, 0x8028d181, 0x2c32, 0x4249, 0x84, 0x93, 0x1b, 0xfb, 0x22,
                        0x04, 0x55, 0x74)
PLATFORM_INTERFACE_UUID(IFixedDocument, 0xf222ca9f, 0x9968, 0x4db9, 0x81, 0xbd, 0xab, 0xae, 0xbf, 0x15, 0xf9,
                        0x3f)
PLATFORM_INTERFACE_UUID(IFixedPage, 0x3d9f6448, 0x7e95, 0x4cb5, 0x94, 0xfb, 0x01, 0x80, 0xc2, 0x88, 0x3a,
                        0x57)
PLATFORM_INTERFACE_UUID(IXpsDocumentProvider, 0xb8cf8530, 0x5562, 0x47c4, 0xab, 0x67, 0xb1, 0xf6, 0x9e, 0xcf,
                        0x96, 0x1e)
PLATFORM_INTERFACE_UUID(IXpsDocumentConsumer, 0x4368d8a2, 0x4181, 0x4a9f, 0xb2, 0x95, 0x3d, 0x9a, 0x38, 0xbb,
                        0x9b, 0xa0)
PLATFORM_INTERFACE_UUID(IPrintPipelineProgressReport, 0xedc12c7c, 0xed40, 0x4ea5, 0x96, 0xa6, 0x5e, 0x43,
                        0x97, 0x49, 0x7a, 0x61)
PLATFORM_INTERFACE_UUID(IPrintClassObjectFactory, 0x9af593dd, 0x9b02, 0x48a8, 0x9b, 0xad, 0x69, 0xac, 0xe4,
                        0x23, 0xf8, 0x8b)

PLATFORM_INTERFACE_EXTENDS(IPartPrintTicket, IPartBase)
PLATFORM_INTERFACE_EXTENDS(IPartColorProfile, IPartBase)
PLATFORM_INTERFACE_EXTENDS(IPartResourceDictionary, IPartBase)
PLATFORM_INTERFACE_EXTENDS(IPartImage, IPartBase)
PLATFORM_INTERFACE_EXTENDS(IPartFont, IPartBase)
PLATFORM_INTERFACE_EXTENDS(IPartFont2, IPartFont)
PLATFORM_INTERFACE_EXTENDS(IPartThumbnail, IPartBase)
PLATFORM_INTERFACE_EXTENDS(IFixedPage, IPartBase)
