// The slots of the interfaces that the program never calls. They are there all the same, each under its name: a call
// that goes astray is written down, and fails.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "tests/mailclient/extended/ledger.h"

namespace Unused {

using Mapi::ADRENTRY, Mapi::ADRLIST, Mapi::ADRPARM, Mapi::ENTRYID, Mapi::ENTRYLIST, Mapi::Guid, Mapi::IAttach;
using Mapi::IMAPIAdviseSink, Mapi::IMAPIFolder, Mapi::IMAPIProgress, Mapi::IMAPITable, Mapi::IMessage;
using Mapi::IMsgServiceAdmin, Mapi::IProfSect, Mapi::IUnknown, Mapi::MAPIERROR, Mapi::MAPINAMEID, Mapi::MAPIUID;
using Mapi::NOTIFICATION, Mapi::SPropProblemArray, Mapi::SPropTagArray, Mapi::SPropValue, Mapi::SRestriction;
using Mapi::SRowSet, Mapi::SSortOrderSet, Mapi::TextPointer, Mapi::WindowParameter;
using Result = std::int32_t;
using Number = std::uint32_t;

inline Result Call(const char* name) {
    BeginCall(std::string("unexpected ") + name, {});
    return EndCall(static_cast<Result>(0x80004001)); // E_NOTIMPL
}

template <class TInterface>
class MAPIProp : public TInterface {
public:
    Result GetLastError(Result, Number, MAPIERROR**) override { return Call("IMAPIProp::GetLastError"); }
    Result SaveChanges(Number) override { return Call("IMAPIProp::SaveChanges"); }
    Result GetProps(SPropTagArray*, Number, Number*, SPropValue**) override { return Call("IMAPIProp::GetProps"); }
    Result GetPropList(Number, SPropTagArray**) override { return Call("IMAPIProp::GetPropList"); }
    Result OpenProperty(Number, const Guid*, Number, Number, IUnknown**) override {
        return Call("IMAPIProp::OpenProperty");
    }
    Result SetProps(Number, SPropValue*, SPropProblemArray**) override { return Call("IMAPIProp::SetProps"); }
    Result DeleteProps(SPropTagArray*, SPropProblemArray**) override { return Call("IMAPIProp::DeleteProps"); }
    Result CopyTo(Number, const Guid*, SPropTagArray*, WindowParameter, IMAPIProgress*, const Guid*, void*, Number,
                  SPropProblemArray**) override {
        return Call("IMAPIProp::CopyTo");
    }
    Result CopyProps(SPropTagArray*, WindowParameter, IMAPIProgress*, const Guid*, void*, Number,
                     SPropProblemArray**) override {
        return Call("IMAPIProp::CopyProps");
    }
    Result GetNamesFromIDs(SPropTagArray**, Guid*, Number, Number*, MAPINAMEID***) override {
        return Call("IMAPIProp::GetNamesFromIDs");
    }
    Result GetIDsFromNames(Number, MAPINAMEID**, Number, SPropTagArray**) override {
        return Call("IMAPIProp::GetIDsFromNames");
    }

protected:
    ~MAPIProp() = default;
};

class MAPITable : public Mapi::IMAPITable {
public:
    Result GetLastError(Result, Number, MAPIERROR**) override { return Call("IMAPITable::GetLastError"); }
    Result Advise(Number, IMAPIAdviseSink*, Number*) override { return Call("IMAPITable::Advise"); }
    Result Unadvise(Number) override { return Call("IMAPITable::Unadvise"); }
    Result GetStatus(Number*, Number*) override { return Call("IMAPITable::GetStatus"); }
    Result QueryColumns(Number, SPropTagArray**) override { return Call("IMAPITable::QueryColumns"); }
    Result GetRowCount(Number, Number*) override { return Call("IMAPITable::GetRowCount"); }
    Result SeekRow(Number, Result, Result*) override { return Call("IMAPITable::SeekRow"); }
    Result SeekRowApprox(Number, Number) override { return Call("IMAPITable::SeekRowApprox"); }
    Result QueryPosition(Number*, Number*, Number*) override { return Call("IMAPITable::QueryPosition"); }
    Result FindRow(SRestriction*, Number, Number) override { return Call("IMAPITable::FindRow"); }
    Result Restrict(SRestriction*, Number) override { return Call("IMAPITable::Restrict"); }
    Result CreateBookmark(Number*) override { return Call("IMAPITable::CreateBookmark"); }
    Result FreeBookmark(Number) override { return Call("IMAPITable::FreeBookmark"); }
    Result SortTable(SSortOrderSet*, Number) override { return Call("IMAPITable::SortTable"); }
    Result QuerySortOrder(SSortOrderSet**) override { return Call("IMAPITable::QuerySortOrder"); }
    Result QueryRows(Result, Number, SRowSet**) override { return Call("IMAPITable::QueryRows"); }
    Result Abort() override { return Call("IMAPITable::Abort"); }
    Result ExpandRow(Number, std::uint8_t*, Number, Number, SRowSet**, Number*) override {
        return Call("IMAPITable::ExpandRow");
    }
    Result CollapseRow(Number, std::uint8_t*, Number, Number*) override { return Call("IMAPITable::CollapseRow"); }
    Result WaitForCompletion(Number, Number, Number*) override { return Call("IMAPITable::WaitForCompletion"); }
    Result GetCollapseState(Number, Number, std::uint8_t*, Number*, std::uint8_t**) override {
        return Call("IMAPITable::GetCollapseState");
    }
    Result SetCollapseState(Number, Number, std::uint8_t*, Number*) override {
        return Call("IMAPITable::SetCollapseState");
    }

protected:
    ~MAPITable() = default;
};

class MAPIStatus : public MAPIProp<Mapi::IMAPIStatus> {
public:
    Result ValidateState(WindowParameter, Number) override { return Call("IMAPIStatus::ValidateState"); }
    Result SettingsDialog(WindowParameter, Number) override { return Call("IMAPIStatus::SettingsDialog"); }
    Result ChangePassword(TextPointer, TextPointer, Number) override { return Call("IMAPIStatus::ChangePassword"); }

protected:
    ~MAPIStatus() = default;
};

class Message : public MAPIProp<Mapi::IMessage> {
public:
    Result GetAttachmentTable(Number, IMAPITable**) override { return Call("IMessage::GetAttachmentTable"); }
    Result OpenAttach(Number, const Guid*, Number, IAttach**) override { return Call("IMessage::OpenAttach"); }
    Result DeleteAttach(Number, WindowParameter, IMAPIProgress*, Number) override {
        return Call("IMessage::DeleteAttach");
    }
    Result GetRecipientTable(Number, IMAPITable**) override { return Call("IMessage::GetRecipientTable"); }
    Result SubmitMessage(Number) override { return Call("IMessage::SubmitMessage"); }
    Result SetReadFlag(Number) override { return Call("IMessage::SetReadFlag"); }

protected:
    ~Message() = default;
};

template <class TInterface>
class MAPIContainer : public MAPIProp<TInterface> {
public:
    Result GetContentsTable(Number, IMAPITable**) override { return Call("IMAPIContainer::GetContentsTable"); }
    Result GetHierarchyTable(Number, IMAPITable**) override { return Call("IMAPIContainer::GetHierarchyTable"); }
    Result OpenEntry(Number, ENTRYID*, const Guid*, Number, Number*, IUnknown**) override {
        return Call("IMAPIContainer::OpenEntry");
    }
    Result SetSearchCriteria(SRestriction*, ENTRYLIST*, Number) override {
        return Call("IMAPIContainer::SetSearchCriteria");
    }
    Result GetSearchCriteria(Number, SRestriction**, ENTRYLIST**, Number*) override {
        return Call("IMAPIContainer::GetSearchCriteria");
    }

protected:
    ~MAPIContainer() = default;
};

class MAPIFolder : public MAPIContainer<Mapi::IMAPIFolder> {
public:
    Result CopyMessages(ENTRYLIST*, const Guid*, void*, WindowParameter, IMAPIProgress*, Number) override {
        return Call("IMAPIFolder::CopyMessages");
    }
    Result DeleteMessages(ENTRYLIST*, WindowParameter, IMAPIProgress*, Number) override {
        return Call("IMAPIFolder::DeleteMessages");
    }
    Result CreateFolder(Number, TextPointer, TextPointer, const Guid*, Number, IMAPIFolder**) override {
        return Call("IMAPIFolder::CreateFolder");
    }
    Result CopyFolder(Number, ENTRYID*, const Guid*, void*, TextPointer, WindowParameter, IMAPIProgress*,
                      Number) override {
        return Call("IMAPIFolder::CopyFolder");
    }
    Result DeleteFolder(Number, ENTRYID*, WindowParameter, IMAPIProgress*, Number) override {
        return Call("IMAPIFolder::DeleteFolder");
    }
    Result SetReadFlags(ENTRYLIST*, WindowParameter, IMAPIProgress*, Number) override {
        return Call("IMAPIFolder::SetReadFlags");
    }
    Result GetMessageStatus(Number, ENTRYID*, Number, Number*) override {
        return Call("IMAPIFolder::GetMessageStatus");
    }
    Result SetMessageStatus(Number, ENTRYID*, Number, Number, Number*) override {
        return Call("IMAPIFolder::SetMessageStatus");
    }
    Result SaveContentsSort(SSortOrderSet*, Number) override { return Call("IMAPIFolder::SaveContentsSort"); }
    Result EmptyFolder(WindowParameter, IMAPIProgress*, Number) override { return Call("IMAPIFolder::EmptyFolder"); }

protected:
    ~MAPIFolder() = default;
};

class MsgStore : public MAPIProp<Mapi::IMsgStore> {
public:
    Result Advise(Number, ENTRYID*, Number, IMAPIAdviseSink*, Number*) override { return Call("IMsgStore::Advise"); }
    Result Unadvise(Number) override { return Call("IMsgStore::Unadvise"); }
    Result CompareEntryIDs(Number, ENTRYID*, Number, ENTRYID*, Number, Number*) override {
        return Call("IMsgStore::CompareEntryIDs");
    }
    Result SetReceiveFolder(TextPointer, Number, Number, ENTRYID*) override {
        return Call("IMsgStore::SetReceiveFolder");
    }
    Result GetReceiveFolderTable(Number, IMAPITable**) override { return Call("IMsgStore::GetReceiveFolderTable"); }
    Result StoreLogoff(Number*) override { return Call("IMsgStore::StoreLogoff"); }
    Result AbortSubmit(Number, ENTRYID*, Number) override { return Call("IMsgStore::AbortSubmit"); }
    Result GetOutgoingQueue(Number, IMAPITable**) override { return Call("IMsgStore::GetOutgoingQueue"); }
    Result SetLockState(IMessage*, Number) override { return Call("IMsgStore::SetLockState"); }
    Result FinishedMsg(Number, Number, ENTRYID*) override { return Call("IMsgStore::FinishedMsg"); }
    Result NotifyNewMail(NOTIFICATION*) override { return Call("IMsgStore::NotifyNewMail"); }

protected:
    ~MsgStore() = default;
};

class AddrBook : public MAPIProp<Mapi::IAddrBook> {
public:
    Result OpenEntry(Number, ENTRYID*, const Guid*, Number, Number*, IUnknown**) override {
        return Call("IAddrBook::OpenEntry");
    }
    Result CompareEntryIDs(Number, ENTRYID*, Number, ENTRYID*, Number, Number*) override {
        return Call("IAddrBook::CompareEntryIDs");
    }
    Result Advise(Number, ENTRYID*, Number, IMAPIAdviseSink*, Number*) override { return Call("IAddrBook::Advise"); }
    Result Unadvise(Number) override { return Call("IAddrBook::Unadvise"); }
    Result CreateOneOff(TextPointer, TextPointer, TextPointer, Number, Number*, ENTRYID**) override {
        return Call("IAddrBook::CreateOneOff");
    }
    Result NewEntry(WindowParameter, Number, Number, ENTRYID*, Number, ENTRYID*, Number*, ENTRYID**) override {
        return Call("IAddrBook::NewEntry");
    }
    Result Address(WindowParameter*, ADRPARM*, ADRLIST**) override { return Call("IAddrBook::Address"); }
    Result Details(WindowParameter*, void*, void*, Number, ENTRYID*, void*, void*, TextPointer, Number) override {
        return Call("IAddrBook::Details");
    }
    Result RecipOptions(WindowParameter, Number, ADRENTRY*) override { return Call("IAddrBook::RecipOptions"); }
    Result QueryDefaultRecipOpt(TextPointer, Number, Number*, SPropValue**) override {
        return Call("IAddrBook::QueryDefaultRecipOpt");
    }
    Result GetPAB(Number*, ENTRYID**) override { return Call("IAddrBook::GetPAB"); }
    Result SetPAB(Number, ENTRYID*) override { return Call("IAddrBook::SetPAB"); }
    Result GetDefaultDir(Number*, ENTRYID**) override { return Call("IAddrBook::GetDefaultDir"); }
    Result SetDefaultDir(Number, ENTRYID*) override { return Call("IAddrBook::SetDefaultDir"); }
    Result GetSearchPath(Number, SRowSet**) override { return Call("IAddrBook::GetSearchPath"); }
    Result SetSearchPath(Number, SRowSet*) override { return Call("IAddrBook::SetSearchPath"); }
    Result PrepareRecips(Number, SPropTagArray*, ADRLIST*) override { return Call("IAddrBook::PrepareRecips"); }

protected:
    ~AddrBook() = default;
};

class MAPISession : public Mapi::IMAPISession {
public:
    Result GetLastError(Result, Number, MAPIERROR**) override { return Call("IMAPISession::GetLastError"); }
    Result OpenProfileSection(MAPIUID*, const Guid*, Number, IProfSect**) override {
        return Call("IMAPISession::OpenProfileSection");
    }
    Result GetStatusTable(Number, IMAPITable**) override { return Call("IMAPISession::GetStatusTable"); }
    Result CompareEntryIDs(Number, ENTRYID*, Number, ENTRYID*, Number, Number*) override {
        return Call("IMAPISession::CompareEntryIDs");
    }
    Result Advise(Number, ENTRYID*, Number, IMAPIAdviseSink*, Number*) override { return Call("IMAPISession::Advise"); }
    Result Unadvise(Number) override { return Call("IMAPISession::Unadvise"); }
    Result MessageOptions(WindowParameter, Number, TextPointer, IMessage*) override {
        return Call("IMAPISession::MessageOptions");
    }
    Result QueryDefaultMessageOpt(TextPointer, Number, Number*, SPropValue**) override {
        return Call("IMAPISession::QueryDefaultMessageOpt");
    }
    Result EnumAdrTypes(Number, Number*, TextPointer**) override { return Call("IMAPISession::EnumAdrTypes"); }
    Result QueryIdentity(Number*, ENTRYID**) override { return Call("IMAPISession::QueryIdentity"); }
    Result Logoff(WindowParameter, Number, Number) override { return Call("IMAPISession::Logoff"); }
    Result SetDefaultStore(Number, Number, ENTRYID*) override { return Call("IMAPISession::SetDefaultStore"); }
    Result AdminServices(Number, IMsgServiceAdmin**) override { return Call("IMAPISession::AdminServices"); }

protected:
    ~MAPISession() = default;
};

} // namespace Unused
