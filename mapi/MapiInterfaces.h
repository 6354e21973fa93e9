// The published interfaces of Extended MAPI, slot for slot in the order of the system's <mapidefs.h> and <mapix.h>; a
// test of the Windows build compares the slots. mapi/ calls them; the MAPI library implements them (on Linux that of
// mailsystem/, in the tests a recording one).
#pragma once

#include "mapi/MapiRecords.h"

namespace Mapi {

class IMAPIAdviseSink;
class IMAPIFolder;
class IMAPIProgress;
class IMAPITable;
class IMsgServiceAdmin;
class IProfSect;

using Platform::Guid;
using Platform::IUnknown;

/// A window. As wide as a pointer, although some of the system's headers declare 32 bits.
using WindowParameter = std::uintptr_t;
/// What PrepareForm gives and ShowForm takes. As wide as a pointer, although <mapix.h> declares 32 bits.
using MessageToken = std::uintptr_t;
/// A text that is wide if FlagUnicode is among the call's flags, and narrow otherwise.
using TextPointer = void*;

class IMAPIProp : public IUnknown {
public:
    virtual std::int32_t GetLastError(std::int32_t result, std::uint32_t flags, MAPIERROR** error) = 0;
    virtual std::int32_t SaveChanges(std::uint32_t flags) = 0;
    virtual std::int32_t GetProps(SPropTagArray* tags, std::uint32_t flags, std::uint32_t* count,
                                  SPropValue** values) = 0;
    virtual std::int32_t GetPropList(std::uint32_t flags, SPropTagArray** tags) = 0;
    virtual std::int32_t OpenProperty(std::uint32_t tag, const Guid* interfaceId, std::uint32_t interfaceOptions,
                                      std::uint32_t flags, IUnknown** object) = 0;
    virtual std::int32_t SetProps(std::uint32_t count, SPropValue* values, SPropProblemArray** problems) = 0;
    virtual std::int32_t DeleteProps(SPropTagArray* tags, SPropProblemArray** problems) = 0;
    virtual std::int32_t CopyTo(std::uint32_t excludedCount, const Guid* excluded, SPropTagArray* excludedTags,
                                WindowParameter window, IMAPIProgress* progress, const Guid* interfaceId, void* target,
                                std::uint32_t flags, SPropProblemArray** problems) = 0;
    virtual std::int32_t CopyProps(SPropTagArray* tags, WindowParameter window, IMAPIProgress* progress,
                                   const Guid* interfaceId, void* target, std::uint32_t flags,
                                   SPropProblemArray** problems) = 0;
    virtual std::int32_t GetNamesFromIDs(SPropTagArray** tags, Guid* propertySet, std::uint32_t flags,
                                         std::uint32_t* count, MAPINAMEID*** names) = 0;
    virtual std::int32_t GetIDsFromNames(std::uint32_t count, MAPINAMEID** names, std::uint32_t flags,
                                         SPropTagArray** tags) = 0;

protected:
    ~IMAPIProp() = default;
};

class IMAPITable : public IUnknown {
public:
    virtual std::int32_t GetLastError(std::int32_t result, std::uint32_t flags, MAPIERROR** error) = 0;
    virtual std::int32_t Advise(std::uint32_t eventMask, IMAPIAdviseSink* sink, std::uint32_t* connection) = 0;
    virtual std::int32_t Unadvise(std::uint32_t connection) = 0;
    virtual std::int32_t GetStatus(std::uint32_t* status, std::uint32_t* type) = 0;
    virtual std::int32_t SetColumns(SPropTagArray* tags, std::uint32_t flags) = 0;
    virtual std::int32_t QueryColumns(std::uint32_t flags, SPropTagArray** tags) = 0;
    virtual std::int32_t GetRowCount(std::uint32_t flags, std::uint32_t* count) = 0;
    virtual std::int32_t SeekRow(std::uint32_t origin, std::int32_t rowCount, std::int32_t* rowsSought) = 0;
    virtual std::int32_t SeekRowApprox(std::uint32_t numerator, std::uint32_t denominator) = 0;
    virtual std::int32_t QueryPosition(std::uint32_t* row, std::uint32_t* numerator, std::uint32_t* denominator) = 0;
    virtual std::int32_t FindRow(SRestriction* restriction, std::uint32_t origin, std::uint32_t flags) = 0;
    virtual std::int32_t Restrict(SRestriction* restriction, std::uint32_t flags) = 0;
    virtual std::int32_t CreateBookmark(std::uint32_t* position) = 0;
    virtual std::int32_t FreeBookmark(std::uint32_t position) = 0;
    virtual std::int32_t SortTable(SSortOrderSet* criteria, std::uint32_t flags) = 0;
    virtual std::int32_t QuerySortOrder(SSortOrderSet** criteria) = 0;
    virtual std::int32_t QueryRows(std::int32_t rowCount, std::uint32_t flags, SRowSet** rows) = 0;
    virtual std::int32_t Abort() = 0;
    virtual std::int32_t ExpandRow(std::uint32_t keySize, std::uint8_t* key, std::uint32_t rowCount,
                                   std::uint32_t flags, SRowSet** rows, std::uint32_t* moreRows) = 0;
    virtual std::int32_t CollapseRow(std::uint32_t keySize, std::uint8_t* key, std::uint32_t flags,
                                     std::uint32_t* rowCount) = 0;
    virtual std::int32_t WaitForCompletion(std::uint32_t flags, std::uint32_t timeout, std::uint32_t* status) = 0;
    virtual std::int32_t GetCollapseState(std::uint32_t flags, std::uint32_t keySize, std::uint8_t* key,
                                          std::uint32_t* stateSize, std::uint8_t** state) = 0;
    virtual std::int32_t SetCollapseState(std::uint32_t flags, std::uint32_t stateSize, std::uint8_t* state,
                                          std::uint32_t* location) = 0;

protected:
    ~IMAPITable() = default;
};

class IMAPIStatus : public IMAPIProp {
public:
    virtual std::int32_t ValidateState(WindowParameter window, std::uint32_t flags) = 0;
    virtual std::int32_t SettingsDialog(WindowParameter window, std::uint32_t flags) = 0;
    virtual std::int32_t ChangePassword(TextPointer oldPassword, TextPointer newPassword, std::uint32_t flags) = 0;
    virtual std::int32_t FlushQueues(WindowParameter window, std::uint32_t targetSize, ENTRYID* target,
                                     std::uint32_t flags) = 0;

protected:
    ~IMAPIStatus() = default;
};

class IAttach : public IMAPIProp {
protected:
    ~IAttach() = default;
};

class IMessage : public IMAPIProp {
public:
    virtual std::int32_t GetAttachmentTable(std::uint32_t flags, IMAPITable** table) = 0;
    virtual std::int32_t OpenAttach(std::uint32_t number, const Guid* interfaceId, std::uint32_t flags,
                                    IAttach** attachment) = 0;
    virtual std::int32_t CreateAttach(const Guid* interfaceId, std::uint32_t flags, std::uint32_t* number,
                                      IAttach** attachment) = 0;
    virtual std::int32_t DeleteAttach(std::uint32_t number, WindowParameter window, IMAPIProgress* progress,
                                      std::uint32_t flags) = 0;
    virtual std::int32_t GetRecipientTable(std::uint32_t flags, IMAPITable** table) = 0;
    virtual std::int32_t ModifyRecipients(std::uint32_t flags, ADRLIST* recipients) = 0;
    virtual std::int32_t SubmitMessage(std::uint32_t flags) = 0;
    virtual std::int32_t SetReadFlag(std::uint32_t flags) = 0;

protected:
    ~IMessage() = default;
};

class IMAPIContainer : public IMAPIProp {
public:
    virtual std::int32_t GetContentsTable(std::uint32_t flags, IMAPITable** table) = 0;
    virtual std::int32_t GetHierarchyTable(std::uint32_t flags, IMAPITable** table) = 0;
    virtual std::int32_t OpenEntry(std::uint32_t entryIdSize, ENTRYID* entryId, const Guid* interfaceId,
                                   std::uint32_t flags, std::uint32_t* type, IUnknown** object) = 0;
    virtual std::int32_t SetSearchCriteria(SRestriction* restriction, ENTRYLIST* containers, std::uint32_t flags) = 0;
    virtual std::int32_t GetSearchCriteria(std::uint32_t flags, SRestriction** restriction, ENTRYLIST** containers,
                                           std::uint32_t* state) = 0;

protected:
    ~IMAPIContainer() = default;
};

class IMAPIFolder : public IMAPIContainer {
public:
    virtual std::int32_t CreateMessage(const Guid* interfaceId, std::uint32_t flags, IMessage** message) = 0;
    virtual std::int32_t CopyMessages(ENTRYLIST* messages, const Guid* interfaceId, void* target,
                                      WindowParameter window, IMAPIProgress* progress, std::uint32_t flags) = 0;
    virtual std::int32_t DeleteMessages(ENTRYLIST* messages, WindowParameter window, IMAPIProgress* progress,
                                        std::uint32_t flags) = 0;
    virtual std::int32_t CreateFolder(std::uint32_t type, TextPointer name, TextPointer comment,
                                      const Guid* interfaceId, std::uint32_t flags, IMAPIFolder** folder) = 0;
    virtual std::int32_t CopyFolder(std::uint32_t entryIdSize, ENTRYID* entryId, const Guid* interfaceId, void* target,
                                    TextPointer newName, WindowParameter window, IMAPIProgress* progress,
                                    std::uint32_t flags) = 0;
    virtual std::int32_t DeleteFolder(std::uint32_t entryIdSize, ENTRYID* entryId, WindowParameter window,
                                      IMAPIProgress* progress, std::uint32_t flags) = 0;
    virtual std::int32_t SetReadFlags(ENTRYLIST* messages, WindowParameter window, IMAPIProgress* progress,
                                      std::uint32_t flags) = 0;
    virtual std::int32_t GetMessageStatus(std::uint32_t entryIdSize, ENTRYID* entryId, std::uint32_t flags,
                                          std::uint32_t* status) = 0;
    virtual std::int32_t SetMessageStatus(std::uint32_t entryIdSize, ENTRYID* entryId, std::uint32_t status,
                                          std::uint32_t mask, std::uint32_t* oldStatus) = 0;
    virtual std::int32_t SaveContentsSort(SSortOrderSet* criteria, std::uint32_t flags) = 0;
    virtual std::int32_t EmptyFolder(WindowParameter window, IMAPIProgress* progress, std::uint32_t flags) = 0;

protected:
    ~IMAPIFolder() = default;
};

class IMsgStore : public IMAPIProp {
public:
    virtual std::int32_t Advise(std::uint32_t entryIdSize, ENTRYID* entryId, std::uint32_t eventMask,
                                IMAPIAdviseSink* sink, std::uint32_t* connection) = 0;
    virtual std::int32_t Unadvise(std::uint32_t connection) = 0;
    virtual std::int32_t CompareEntryIDs(std::uint32_t firstSize, ENTRYID* first, std::uint32_t secondSize,
                                         ENTRYID* second, std::uint32_t flags, std::uint32_t* result) = 0;
    virtual std::int32_t OpenEntry(std::uint32_t entryIdSize, ENTRYID* entryId, const Guid* interfaceId,
                                   std::uint32_t flags, std::uint32_t* type, IUnknown** object) = 0;
    virtual std::int32_t SetReceiveFolder(TextPointer messageClass, std::uint32_t flags, std::uint32_t entryIdSize,
                                          ENTRYID* entryId) = 0;
    virtual std::int32_t GetReceiveFolder(TextPointer messageClass, std::uint32_t flags, std::uint32_t* entryIdSize,
                                          ENTRYID** entryId, TextPointer* explicitClass) = 0;
    virtual std::int32_t GetReceiveFolderTable(std::uint32_t flags, IMAPITable** table) = 0;
    virtual std::int32_t StoreLogoff(std::uint32_t* flags) = 0;
    virtual std::int32_t AbortSubmit(std::uint32_t entryIdSize, ENTRYID* entryId, std::uint32_t flags) = 0;
    virtual std::int32_t GetOutgoingQueue(std::uint32_t flags, IMAPITable** table) = 0;
    virtual std::int32_t SetLockState(IMessage* message, std::uint32_t state) = 0;
    virtual std::int32_t FinishedMsg(std::uint32_t flags, std::uint32_t entryIdSize, ENTRYID* entryId) = 0;
    virtual std::int32_t NotifyNewMail(NOTIFICATION* notification) = 0;

protected:
    ~IMsgStore() = default;
};

class IAddrBook : public IMAPIProp {
public:
    virtual std::int32_t OpenEntry(std::uint32_t entryIdSize, ENTRYID* entryId, const Guid* interfaceId,
                                   std::uint32_t flags, std::uint32_t* type, IUnknown** object) = 0;
    virtual std::int32_t CompareEntryIDs(std::uint32_t firstSize, ENTRYID* first, std::uint32_t secondSize,
                                         ENTRYID* second, std::uint32_t flags, std::uint32_t* result) = 0;
    virtual std::int32_t Advise(std::uint32_t entryIdSize, ENTRYID* entryId, std::uint32_t eventMask,
                                IMAPIAdviseSink* sink, std::uint32_t* connection) = 0;
    virtual std::int32_t Unadvise(std::uint32_t connection) = 0;
    virtual std::int32_t CreateOneOff(TextPointer name, TextPointer addressType, TextPointer address,
                                      std::uint32_t flags, std::uint32_t* entryIdSize, ENTRYID** entryId) = 0;
    virtual std::int32_t NewEntry(WindowParameter window, std::uint32_t flags, std::uint32_t containerSize,
                                  ENTRYID* container, std::uint32_t templateSize, ENTRYID* entryTemplate,
                                  std::uint32_t* entryIdSize, ENTRYID** entryId) = 0;
    /// Resolves in place: an entry's properties may be freed and replaced.
    virtual std::int32_t ResolveName(WindowParameter window, std::uint32_t flags, TextPointer title, ADRLIST* list) = 0;
    virtual std::int32_t Address(WindowParameter* window, ADRPARM* parameters, ADRLIST** list) = 0;
    virtual std::int32_t Details(WindowParameter* window, void* dismiss, void* dismissContext,
                                 std::uint32_t entryIdSize, ENTRYID* entryId, void* button, void* buttonContext,
                                 TextPointer buttonText, std::uint32_t flags) = 0;
    virtual std::int32_t RecipOptions(WindowParameter window, std::uint32_t flags, ADRENTRY* recipient) = 0;
    virtual std::int32_t QueryDefaultRecipOpt(TextPointer addressType, std::uint32_t flags, std::uint32_t* count,
                                              SPropValue** options) = 0;
    virtual std::int32_t GetPAB(std::uint32_t* entryIdSize, ENTRYID** entryId) = 0;
    virtual std::int32_t SetPAB(std::uint32_t entryIdSize, ENTRYID* entryId) = 0;
    virtual std::int32_t GetDefaultDir(std::uint32_t* entryIdSize, ENTRYID** entryId) = 0;
    virtual std::int32_t SetDefaultDir(std::uint32_t entryIdSize, ENTRYID* entryId) = 0;
    virtual std::int32_t GetSearchPath(std::uint32_t flags, SRowSet** path) = 0;
    virtual std::int32_t SetSearchPath(std::uint32_t flags, SRowSet* path) = 0;
    virtual std::int32_t PrepareRecips(std::uint32_t flags, SPropTagArray* tags, ADRLIST* recipients) = 0;

protected:
    ~IAddrBook() = default;
};

class IMAPISession : public IUnknown {
public:
    virtual std::int32_t GetLastError(std::int32_t result, std::uint32_t flags, MAPIERROR** error) = 0;
    virtual std::int32_t GetMsgStoresTable(std::uint32_t flags, IMAPITable** table) = 0;
    virtual std::int32_t OpenMsgStore(WindowParameter window, std::uint32_t entryIdSize, ENTRYID* entryId,
                                      const Guid* interfaceId, std::uint32_t flags, IMsgStore** store) = 0;
    virtual std::int32_t OpenAddressBook(WindowParameter window, const Guid* interfaceId, std::uint32_t flags,
                                         IAddrBook** book) = 0;
    virtual std::int32_t OpenProfileSection(MAPIUID* section, const Guid* interfaceId, std::uint32_t flags,
                                            IProfSect** profileSection) = 0;
    virtual std::int32_t GetStatusTable(std::uint32_t flags, IMAPITable** table) = 0;
    virtual std::int32_t OpenEntry(std::uint32_t entryIdSize, ENTRYID* entryId, const Guid* interfaceId,
                                   std::uint32_t flags, std::uint32_t* type, IUnknown** object) = 0;
    virtual std::int32_t CompareEntryIDs(std::uint32_t firstSize, ENTRYID* first, std::uint32_t secondSize,
                                         ENTRYID* second, std::uint32_t flags, std::uint32_t* result) = 0;
    virtual std::int32_t Advise(std::uint32_t entryIdSize, ENTRYID* entryId, std::uint32_t eventMask,
                                IMAPIAdviseSink* sink, std::uint32_t* connection) = 0;
    virtual std::int32_t Unadvise(std::uint32_t connection) = 0;
    virtual std::int32_t MessageOptions(WindowParameter window, std::uint32_t flags, TextPointer addressType,
                                        IMessage* message) = 0;
    virtual std::int32_t QueryDefaultMessageOpt(TextPointer addressType, std::uint32_t flags, std::uint32_t* count,
                                                SPropValue** options) = 0;
    virtual std::int32_t EnumAdrTypes(std::uint32_t flags, std::uint32_t* count, TextPointer** types) = 0;
    virtual std::int32_t QueryIdentity(std::uint32_t* entryIdSize, ENTRYID** entryId) = 0;
    virtual std::int32_t Logoff(WindowParameter window, std::uint32_t flags, std::uint32_t reserved) = 0;
    virtual std::int32_t SetDefaultStore(std::uint32_t flags, std::uint32_t entryIdSize, ENTRYID* entryId) = 0;
    virtual std::int32_t AdminServices(std::uint32_t flags, IMsgServiceAdmin** services) = 0;
    virtual std::int32_t ShowForm(WindowParameter window, IMsgStore* store, IMAPIFolder* folder,
                                  const Guid* interfaceId, MessageToken token, IMessage* sentMessage,
                                  std::uint32_t flags, std::uint32_t messageStatus, std::uint32_t messageFlags,
                                  std::uint32_t access, char* messageClass) = 0;
    virtual std::int32_t PrepareForm(const Guid* interfaceId, IMessage* message, MessageToken* token) = 0;

protected:
    ~IMAPISession() = default;
};

} // namespace Mapi
