"""The mail clients that are tried: one row a client, with the files that make its account.

No account needs a network: messages are kept in folders below the home, and nothing is sent or fetched.
"""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Client:
    packages: str  # Debian's
    entry: str  # the desktop entry that is made the default for mailto
    window: str = ""  # the composer's title, a regular expression; none where it must not be started
    # A path below the home: its text, in which {imap} is the port of a server on this machine.
    account: dict = dataclasses.field(default_factory=dict)
    drafts: str = ""  # where the drafts that the client keeps are: a pattern below the home
    save: str = "ctrl+s"  # the key that makes it keep one
    question: tuple = ()  # the title of a question that comes first, and the keys that answer it
    drops: str = ""  # what the client itself takes out of the recipients' names, whoever wrote them
    terminal: bool = False  # the client isn't started: the line that is printed is typed into a terminal


THUNDERBIRD_PREFERENCES = """
user_pref("mail.accountmanager.accounts", "account1,account2");
user_pref("mail.accountmanager.defaultaccount", "account2");
user_pref("mail.accountmanager.localfoldersserver", "server1");
user_pref("mail.account.account1.server", "server1");
user_pref("mail.account.account2.server", "server2");
user_pref("mail.account.account2.identities", "id1");
user_pref("mail.server.server1.type", "none");
user_pref("mail.server.server1.hostname", "Local Folders");
user_pref("mail.server.server1.userName", "nobody");
user_pref("mail.server.server1.directory-rel", "[ProfD]Mail/Local Folders");
user_pref("mail.server.server2.type", "pop3");
user_pref("mail.server.server2.hostname", "localhost");
user_pref("mail.server.server2.userName", "tester");
user_pref("mail.server.server2.login_at_startup", false);
user_pref("mail.server.server2.check_new_mail", false);
user_pref("mail.server.server2.directory-rel", "[ProfD]Mail/localhost");
user_pref("mail.identity.id1.fullName", "Tester");
user_pref("mail.identity.id1.useremail", "tester@example.org");
user_pref("mail.identity.id1.valid", true);
user_pref("mail.identity.id1.compose_html", false);
user_pref("mail.identity.id1.draft_folder", "mailbox://nobody@Local%20Folders/Drafts");
user_pref("mail.shell.checkDefaultClient", false);
user_pref("mailnews.start_page.enabled", false);
user_pref("mail.provider.enabled", false);
"""

EVOLUTION_ACCOUNT = """
[Data Source]
DisplayName=Tester

[Mail Account]
BackendName=none
IdentityUid=tester-identity
"""

EVOLUTION_IDENTITY = """
[Data Source]
DisplayName=Tester
Parent=tester

[Mail Identity]
Address=tester@example.org
Name=Tester

[Mail Composition]
DraftsFolder=folder://local/Drafts

[Mail Submission]
TransportUid=tester-transport
"""

EVOLUTION_TRANSPORT = """
[Data Source]
DisplayName=Tester
Parent=tester

[Mail Transport]
BackendName=smtp

[Authentication]
Host=localhost
Method=none
Port=25
"""

GEARY_ACCOUNT = """
[Metadata]
version=1
status=enabled

[Account]
ordinal=1
label=Tester
save_drafts=true
sender_mailboxes=Tester <tester@example.org>;
service_provider=other

[Folders]

[Incoming]
login=tester
remember_password=false
host=localhost
port={imap}
transport_security=none
credentials=custom

[Outgoing]
host=localhost
port=1025
transport_security=none
credentials=none
"""

KMAIL_IDENTITY = """
[General]
Default Identity=1

[Identity #0]
Email Address=tester@example.org
Identity=Tester
Name=Tester
uoid=1
"""

MH_ACCOUNT = """
[Account: 1]
account_name=Tester
is_default=1
name=Tester
address=tester@example.org
protocol=5
receive_at_get_all=0
smtp_server=localhost
"""

MH_FOLDERS = """<?xml version="1.0" encoding="UTF-8"?>
<folderlist><folder type="mh" name="Mail" path="Mail"/></folderlist>
"""

# It asks for nothing, and goes through an editor that changes nothing.
MUTT_SETTINGS = """
set realname=Tester from=tester@example.org folder=~ postponed=~/postponed confirmcreate=no
set editor=true autoedit edit_headers
"""

CLIENTS = {
    "thunderbird": Client(
        packages="thunderbird", entry="thunderbird.desktop", window="^Write: ",
        account={".thunderbird/profiles.ini": "[Profile0]\nName=default\nIsRelative=1\nPath=tester\nDefault=1\n",
                 ".thunderbird/tester/prefs.js": THUNDERBIRD_PREFERENCES},
        drafts=".thunderbird/tester/Mail/Local Folders/Drafts"),
    "evolution": Client(
        packages="evolution", entry="org.gnome.Evolution.desktop", window="^It's ",
        account={".config/evolution/sources/tester.source": EVOLUTION_ACCOUNT,
                 ".config/evolution/sources/tester-identity.source": EVOLUTION_IDENTITY,
                 ".config/evolution/sources/tester-transport.source": EVOLUTION_TRANSPORT},
        drafts=".local/share/evolution/mail/local/.Drafts/cur/*"),
    "geary": Client(
        packages="geary", entry="org.gnome.Geary.desktop", window="^Inbox|^It's ",
        account={".config/geary/account_01/geary.ini": GEARY_ACCOUNT}, question=("^Geary$", "x", "Return"),
        drafts="imap/*", drops='"'),
    "kmail": Client(
        packages="kmail akonadi-backend-sqlite", entry="org.kde.kmail2.desktop", window="^KMail|^It's ",
        account={".config/emailidentities": KMAIL_IDENTITY,
                 ".config/akonadi/akonadiserverrc": "[%General]\nDriver=QSQLITE\n",
                 # Else it makes its folders when the composer is there already, and may lose what it keeps then.
                 ".config/akonadi/agentsrc":
                     "[Instances]\nakonadi_maildir_resource_0\\AgentType=akonadi_maildir_resource\n",
                 ".config/akonadi_maildir_resource_0rc": "[General]\nPath[$e]=$HOME/.local/share/local-mail/\n",
                 ".config/specialmailcollectionsrc":
                     "[SpecialCollections]\nDefaultResourceId=akonadi_maildir_resource_0\n"},
        drafts=".local/share/*local-mail*/drafts/*/*"),
    "claws": Client(
        packages="claws-mail", entry="claws-mail.desktop", window=" - Compose message",
        account={".claws-mail/accountrc": MH_ACCOUNT, ".claws-mail/folderlist.xml": MH_FOLDERS,
                 ".claws-mail/clawsrc": "[Common]\nenable_aspell=0\ncompose_notebook_height=240\n"},
        drafts="Mail/draft/[0-9]*"),
    "sylpheed": Client(
        packages="sylpheed", entry="sylpheed.desktop", window=" - Compose",
        account={".sylpheed-2.0/accountrc": MH_ACCOUNT, ".sylpheed-2.0/folderlist.xml": MH_FOLDERS,
                 ".sylpheed-2.0/sylpheedrc": "[Common]\n"},
        drafts="Mail/draft/[0-9]*"),
    "mutt": Client(
        packages="mutt", entry="mutt.desktop", window="^terminal$", account={".muttrc": MUTT_SETTINGS},
        drafts="postponed", save="P", terminal=True),
    "neomutt": Client(
        packages="neomutt", entry="neomutt.desktop", window="^terminal$", account={".neomuttrc": MUTT_SETTINGS},
        drafts="postponed", save="P", terminal=True),
    "balsa": Client(packages="balsa", entry="balsa-mailto-handler.desktop"),
}
