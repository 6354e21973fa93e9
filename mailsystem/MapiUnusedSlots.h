// The slots of the published interfaces with one answer for all of them. The classes of a MAPI library derive from
// these and fill the slots that they have a use for: those of this folder, and those of the recording library of the
// tests. TAnswer::Call(name) is handed the slot's name and gives the result.
#pragma once

#include "mapi/MapiInterfaces.h"

namespace Mapi::Slots {

using Result = std::int32_t;
using Number = std::uint32_t;

template <class TInterface, class TAnswer>
class PropSlots : public TInterface {
public:
    Result GetLastError(Result, Number, MAPIERROR**) override { return TAnswer::Call("IMAPIProp::GetLastError"); }
    Result SaveChanges(Number) override { return TAnswer::Call("IMAPIProp::SaveChanges"); }
    Result GetProps(SPropTagArray*, Number, Number*, SPropValue**) override {
        return TAnswer::Call("IMAPIProp::GetProps");
    }
    Result GetPropList(Number, SPropTagArray**) override { return TAnswer::Call("IMAPIProp::GetPropList"); }
    Result OpenProperty(Number, const Guid*, Number, Number, IUnknown**) override {
        return TAnswer::Call("IMAPIProp::OpenProperty");
    }
    Result SetProps(Number, SPropValue*, SPropProblemArray**) override { return TAnswer::Call("IMAPIProp::SetProps"); }
    Result DeleteProps(SPropTagArray*, SPropProblemArray**) override { return TAnswer::Call("IMAPIProp::DeleteProps"); }
    Result CopyTo(Number, const Guid*, SPropTagArray*, WindowParameter, IMAPIProgress*, const Guid*, void*, Number,
                  SPropProblemArray**) override {
        return TAnswer::Call("IMAPIProp::CopyTo");
    }
    Result CopyProps(SPropTagArray*, WindowParameter, IMAPIProgress*, const Guid*, void*, Number,
                     SPropProblemArray**) override {
        return TAnswer::Call("IMAPIProp::CopyProps");
    }
    Result GetNamesFromIDs(SPropTagArray**, Guid*, Number, Number*, MAPINAMEID***) override {
        return TAnswer::Call("IMAPIProp::GetNamesFromIDs");
    }
    Result GetIDsFromNames(Number, MAPINAMEID**, Number, SPropTagArray**) override {
        return TAnswer::Call("IMAPIProp::GetIDsFromNames");
    }

protected:
    ~PropSlots() = default;
};

template <class TAnswer>
class TableSlots : public IMAPITable {
public:
    Result GetLastError(Result, Number, MAPIERROR**) override { return TAnswer::Call("IMAPITable::GetLastError"); }
    Result Advise(Number, IMAPIAdviseSink*, Number*) override { return TAnswer::Call("IMAPITable::Advise"); }
    Result Unadvise(Number) override { return TAnswer::Call("IMAPITable::Unadvise"); }
    Result GetStatus(Number*, Number*) override { return TAnswer::Call("IMAPITable::GetStatus"); }
    Result QueryColumns(Number, SPropTagArray**) override { return TAnswer::Call("IMAPITable::QueryColumns"); }
    Result GetRowCount(Number, Number*) override { return TAnswer::Call("IMAPITable::GetRowCount"); }
    Result SeekRow(Number, Result, Result*) override { return TAnswer::Call("IMAPITable::SeekRow"); }
    Result SeekRowApprox(Number, Number) override { return TAnswer::Call("IMAPITable::SeekRowApprox"); }
    Result QueryPosition(Number*, Number*, Number*) override { return TAnswer::Call("IMAPITable::QueryPosition"); }
    Result FindRow(SRestriction*, Number, Number) override { return TAnswer::Call("IMAPITable::FindRow"); }
    Result Restrict(SRestriction*, Number) override { return TAnswer::Call("IMAPITable::Restrict"); }
    Result CreateBookmark(Number*) override { return TAnswer::Call("IMAPITable::CreateBookmark"); }
    Result FreeBookmark(Number) override { return TAnswer::Call("IMAPITable::FreeBookmark"); }
    Result SortTable(SSortOrderSet*, Number) override { return TAnswer::Call("IMAPITable::SortTable"); }
    Result QuerySortOrder(SSortOrderSet**) override { return TAnswer::Call("IMAPITable::QuerySortOrder"); }
    Result QueryRows(Result, Number, SRowSet**) override { return TAnswer::Call("IMAPITable::QueryRows"); }
    Result Abort() override { return TAnswer::Call("IMAPITable::Abort"); }
    Result ExpandRow(Number, std::uint8_t*, Number, Number, SRowSet**, Number*) override {
        return TAnswer::Call("IMAPITable::ExpandRow");
    }
    Result CollapseRow(Number, std::uint8_t*, Number, Number*) override {
        return TAnswer::Call("IMAPITable::CollapseRow");
    }
    Result WaitForCompletion(Number, Number, Number*) override {
        return TAnswer::Call("IMAPITable::WaitForCompletion");
    }
    Result GetCollapseState(Number, Number, std::uint8_t*, Number*, std::uint8_t**) override {
        return TAnswer::Call("IMAPITable::GetCollapseState");
    }
    Result SetCollapseState(Number, Number, std::uint8_t*, Number*) override {
        return TAnswer::Call("IMAPITable::SetCollapseState");
    }

protected:
    ~TableSlots() = default;
};

template <class TAnswer>
class StatusSlots : public PropSlots<IMAPIStatus, TAnswer> {
public:
    Result ValidateState(WindowParameter, Number) override { return TAnswer::Call("IMAPIStatus::ValidateState"); }
    Result SettingsDialog(WindowParameter, Number) override { return TAnswer::Call("IMAPIStatus::SettingsDialog"); }
    Result ChangePassword(TextPointer, TextPointer, Number) override {
        return TAnswer::Call("IMAPIStatus::ChangePassword");
    }

protected:
    ~StatusSlots() = default;
};

template <class TAnswer>
class MessageSlots : public PropSlots<IMessage, TAnswer> {
public:
    Result GetAttachmentTable(Number, IMAPITable**) override { return TAnswer::Call("IMessage::GetAttachmentTable"); }
    Result OpenAttach(Number, const Guid*, Number, IAttach**) override { return TAnswer::Call("IMessage::OpenAttach"); }
    Result DeleteAttach(Number, WindowParameter, IMAPIProgress*, Number) override {
        return TAnswer::Call("IMessage::DeleteAttach");
    }
    Result GetRecipientTable(Number, IMAPITable**) override { return TAnswer::Call("IMessage::GetRecipientTable"); }
    Result SubmitMessage(Number) override { return TAnswer::Call("IMessage::SubmitMessage"); }
    Result SetReadFlag(Number) override { return TAnswer::Call("IMessage::SetReadFlag"); }

protected:
    ~MessageSlots() = default;
};

template <class TInterface, class TAnswer>
class ContainerSlots : public PropSlots<TInterface, TAnswer> {
public:
    Result GetContentsTable(Number, IMAPITable**) override { return TAnswer::Call("IMAPIContainer::GetContentsTable"); }
    Result GetHierarchyTable(Number, IMAPITable**) override {
        return TAnswer::Call("IMAPIContainer::GetHierarchyTable");
    }
    Result OpenEntry(Number, ENTRYID*, const Guid*, Number, Number*, IUnknown**) override {
        return TAnswer::Call("IMAPIContainer::OpenEntry");
    }
    Result SetSearchCriteria(SRestriction*, ENTRYLIST*, Number) override {
        return TAnswer::Call("IMAPIContainer::SetSearchCriteria");
    }
    Result GetSearchCriteria(Number, SRestriction**, ENTRYLIST**, Number*) override {
        return TAnswer::Call("IMAPIContainer::GetSearchCriteria");
    }

protected:
    ~ContainerSlots() = default;
};

template <class TAnswer>
class FolderSlots : public ContainerSlots<IMAPIFolder, TAnswer> {
public:
    Result CopyMessages(ENTRYLIST*, const Guid*, void*, WindowParameter, IMAPIProgress*, Number) override {
        return TAnswer::Call("IMAPIFolder::CopyMessages");
    }
    Result DeleteMessages(ENTRYLIST*, WindowParameter, IMAPIProgress*, Number) override {
        return TAnswer::Call("IMAPIFolder::DeleteMessages");
    }
    Result CreateFolder(Number, TextPointer, TextPointer, const Guid*, Number, IMAPIFolder**) override {
        return TAnswer::Call("IMAPIFolder::CreateFolder");
    }
    Result CopyFolder(Number, ENTRYID*, const Guid*, void*, TextPointer, WindowParameter, IMAPIProgress*,
                      Number) override {
        return TAnswer::Call("IMAPIFolder::CopyFolder");
    }
    Result DeleteFolder(Number, ENTRYID*, WindowParameter, IMAPIProgress*, Number) override {
        return TAnswer::Call("IMAPIFolder::DeleteFolder");
    }
    Result SetReadFlags(ENTRYLIST*, WindowParameter, IMAPIProgress*, Number) override {
        return TAnswer::Call("IMAPIFolder::SetReadFlags");
    }
    Result GetMessageStatus(Number, ENTRYID*, Number, Number*) override {
        return TAnswer::Call("IMAPIFolder::GetMessageStatus");
    }
    Result SetMessageStatus(Number, ENTRYID*, Number, Number, Number*) override {
        return TAnswer::Call("IMAPIFolder::SetMessageStatus");
    }
    Result SaveContentsSort(SSortOrderSet*, Number) override { return TAnswer::Call("IMAPIFolder::SaveContentsSort"); }
    Result EmptyFolder(WindowParameter, IMAPIProgress*, Number) override {
        return TAnswer::Call("IMAPIFolder::EmptyFolder");
    }

protected:
    ~FolderSlots() = default;
};

template <class TAnswer>
class StoreSlots : public PropSlots<IMsgStore, TAnswer> {
public:
    Result Advise(Number, ENTRYID*, Number, IMAPIAdviseSink*, Number*) override {
        return TAnswer::Call("IMsgStore::Advise");
    }
    Result Unadvise(Number) override { return TAnswer::Call("IMsgStore::Unadvise"); }
    Result CompareEntryIDs(Number, ENTRYID*, Number, ENTRYID*, Number, Number*) override {
        return TAnswer::Call("IMsgStore::CompareEntryIDs");
    }
    Result SetReceiveFolder(TextPointer, Number, Number, ENTRYID*) override {
        return TAnswer::Call("IMsgStore::SetReceiveFolder");
    }
    Result GetReceiveFolderTable(Number, IMAPITable**) override {
        return TAnswer::Call("IMsgStore::GetReceiveFolderTable");
    }
    Result StoreLogoff(Number*) override { return TAnswer::Call("IMsgStore::StoreLogoff"); }
    Result AbortSubmit(Number, ENTRYID*, Number) override { return TAnswer::Call("IMsgStore::AbortSubmit"); }
    Result GetOutgoingQueue(Number, IMAPITable**) override { return TAnswer::Call("IMsgStore::GetOutgoingQueue"); }
    Result SetLockState(IMessage*, Number) override { return TAnswer::Call("IMsgStore::SetLockState"); }
    Result FinishedMsg(Number, Number, ENTRYID*) override { return TAnswer::Call("IMsgStore::FinishedMsg"); }
    Result NotifyNewMail(NOTIFICATION*) override { return TAnswer::Call("IMsgStore::NotifyNewMail"); }

protected:
    ~StoreSlots() = default;
};

template <class TAnswer>
class AddressBookSlots : public PropSlots<IAddrBook, TAnswer> {
public:
    Result OpenEntry(Number, ENTRYID*, const Guid*, Number, Number*, IUnknown**) override {
        return TAnswer::Call("IAddrBook::OpenEntry");
    }
    Result CompareEntryIDs(Number, ENTRYID*, Number, ENTRYID*, Number, Number*) override {
        return TAnswer::Call("IAddrBook::CompareEntryIDs");
    }
    Result Advise(Number, ENTRYID*, Number, IMAPIAdviseSink*, Number*) override {
        return TAnswer::Call("IAddrBook::Advise");
    }
    Result Unadvise(Number) override { return TAnswer::Call("IAddrBook::Unadvise"); }
    Result CreateOneOff(TextPointer, TextPointer, TextPointer, Number, Number*, ENTRYID**) override {
        return TAnswer::Call("IAddrBook::CreateOneOff");
    }
    Result NewEntry(WindowParameter, Number, Number, ENTRYID*, Number, ENTRYID*, Number*, ENTRYID**) override {
        return TAnswer::Call("IAddrBook::NewEntry");
    }
    Result Address(WindowParameter*, ADRPARM*, ADRLIST**) override { return TAnswer::Call("IAddrBook::Address"); }
    Result Details(WindowParameter*, void*, void*, Number, ENTRYID*, void*, void*, TextPointer, Number) override {
        return TAnswer::Call("IAddrBook::Details");
    }
    Result RecipOptions(WindowParameter, Number, ADRENTRY*) override {
        return TAnswer::Call("IAddrBook::RecipOptions");
    }
    Result QueryDefaultRecipOpt(TextPointer, Number, Number*, SPropValue**) override {
        return TAnswer::Call("IAddrBook::QueryDefaultRecipOpt");
    }
    Result GetPAB(Number*, ENTRYID**) override { return TAnswer::Call("IAddrBook::GetPAB"); }
    Result SetPAB(Number, ENTRYID*) override { return TAnswer::Call("IAddrBook::SetPAB"); }
    Result GetDefaultDir(Number*, ENTRYID**) override { return TAnswer::Call("IAddrBook::GetDefaultDir"); }
    Result SetDefaultDir(Number, ENTRYID*) override { return TAnswer::Call("IAddrBook::SetDefaultDir"); }
    Result GetSearchPath(Number, SRowSet**) override { return TAnswer::Call("IAddrBook::GetSearchPath"); }
    Result SetSearchPath(Number, SRowSet*) override { return TAnswer::Call("IAddrBook::SetSearchPath"); }
    Result PrepareRecips(Number, SPropTagArray*, ADRLIST*) override {
        return TAnswer::Call("IAddrBook::PrepareRecips");
    }

protected:
    ~AddressBookSlots() = default;
};

template <class TAnswer>
class SessionSlots : public IMAPISession {
public:
    Result GetLastError(Result, Number, MAPIERROR**) override { return TAnswer::Call("IMAPISession::GetLastError"); }
    Result OpenProfileSection(MAPIUID*, const Guid*, Number, IProfSect**) override {
        return TAnswer::Call("IMAPISession::OpenProfileSection");
    }
    Result GetStatusTable(Number, IMAPITable**) override { return TAnswer::Call("IMAPISession::GetStatusTable"); }
    Result CompareEntryIDs(Number, ENTRYID*, Number, ENTRYID*, Number, Number*) override {
        return TAnswer::Call("IMAPISession::CompareEntryIDs");
    }
    Result Advise(Number, ENTRYID*, Number, IMAPIAdviseSink*, Number*) override {
        return TAnswer::Call("IMAPISession::Advise");
    }
    Result Unadvise(Number) override { return TAnswer::Call("IMAPISession::Unadvise"); }
    Result MessageOptions(WindowParameter, Number, TextPointer, IMessage*) override {
        return TAnswer::Call("IMAPISession::MessageOptions");
    }
    Result QueryDefaultMessageOpt(TextPointer, Number, Number*, SPropValue**) override {
        return TAnswer::Call("IMAPISession::QueryDefaultMessageOpt");
    }
    Result EnumAdrTypes(Number, Number*, TextPointer**) override { return TAnswer::Call("IMAPISession::EnumAdrTypes"); }
    Result QueryIdentity(Number*, ENTRYID**) override { return TAnswer::Call("IMAPISession::QueryIdentity"); }
    Result Logoff(WindowParameter, Number, Number) override { return TAnswer::Call("IMAPISession::Logoff"); }
    Result SetDefaultStore(Number, Number, ENTRYID*) override { return TAnswer::Call("IMAPISession::SetDefaultStore"); }
    Result AdminServices(Number, IMsgServiceAdmin**) override { return TAnswer::Call("IMAPISession::AdminServices"); }

protected:
    ~SessionSlots() = default;
};

} // namespace Mapi::Slots
