"""The mail clients that are tried: one row a client, with the files that make its account.

No account needs a network: messages are kept in folders below the home, and nothing is sent or fetched.
"""

import dataclasses
import json


@dataclasses.dataclass(frozen=True)
class Client:
    packages: str  # Debian's
    entry: str  # the desktop entry that is made the default for mailto
    window: str = ""  # the composer's title, a regular expression; none where it must not be started
    account: dict = dataclasses.field(default_factory=dict)  # a path below the home: its text
    drafts: str = ""  # where the drafts that the client keeps are: a pattern below the home
    save: str = "ctrl+s"  # the key that makes it keep one
    terminal: bool = False  # the client isn't started: the line that is printed is typed into a terminal


def sections(*rows):
    """A file of settings: the name of each section, and its lines."""
    return "".join(f"[{name}]\n" + "".join(line + "\n" for line in lines) for name, *lines in rows)


def preferences(groups):
    return "".join(f"user_pref({json.dumps(group + name)}, {json.dumps(value)});\n"
                   for group, values in groups.items() for name, value in values.items())


THUNDERBIRD_PREFERENCES = preferences({
    "mail.accountmanager.": {"accounts": "account1,account2", "defaultaccount": "account2",
                             "localfoldersserver": "server1"},
    "mail.account.": {"account1.server": "server1", "account2.server": "server2", "account2.identities": "id1"},
    "mail.server.server1.": {"type": "none", "hostname": "Local Folders", "userName": "nobody",
                             "directory-rel": "[ProfD]Mail/Local Folders"},
    "mail.server.server2.": {"type": "pop3", "hostname": "localhost", "userName": "tester", "login_at_startup": False,
                             "check_new_mail": False, "directory-rel": "[ProfD]Mail/localhost"},
    "mail.identity.id1.": {"fullName": "Tester", "useremail": "tester@example.org", "valid": True,
                           "compose_html": False, "draft_folder": "mailbox://nobody@Local%20Folders/Drafts"},
    "mail.": {"shell.checkDefaultClient": False, "provider.enabled": False},
    "mailnews.": {"start_page.enabled": False}})

EVOLUTION_ACCOUNT = sections(("Data Source", "DisplayName=Tester"),
                             ("Mail Account", "BackendName=none", "IdentityUid=tester-identity"))
EVOLUTION_IDENTITY = sections(("Data Source", "DisplayName=Tester", "Parent=tester"),
                              ("Mail Identity", "Address=tester@example.org", "Name=Tester"),
                              ("Mail Composition", "DraftsFolder=folder://local/Drafts"),
                              ("Mail Submission", "TransportUid=tester-transport"))
EVOLUTION_TRANSPORT = sections(("Data Source", "DisplayName=Tester", "Parent=tester"),
                               ("Mail Transport", "BackendName=smtp"),
                               ("Authentication", "Host=localhost", "Method=none", "Port=25"))

KMAIL_IDENTITY = sections(("General", "Default Identity=1"), ("Identity #0", "Email Address=tester@example.org",
                                                              "Identity=Tester", "Name=Tester", "uoid=1"))
KMAIL_FOLDERS = "akonadi_maildir_resource"

MH_ACCOUNT = sections(("Account: 1", "account_name=Tester", "is_default=1", "name=Tester", "address=tester@example.org",
                       "protocol=5", "receive_at_get_all=0", "smtp_server=localhost"))
MH_FOLDERS = """<?xml version="1.0" encoding="UTF-8"?>
<folderlist><folder type="mh" name="Mail" path="Mail"/></folderlist>
"""

# It asks for nothing, and goes through an editor that changes nothing.
MUTT_SETTINGS = """
set realname=Tester from=tester@example.org folder=~ postponed=~/postponed confirmcreate=no
set editor=true autoedit edit_headers
"""


def mutt(name):
    return Client(packages=name, entry=name + ".desktop", window="^terminal$", account={f".{name}rc": MUTT_SETTINGS},
                  drafts="postponed", save="P", terminal=True)


CLIENTS = {
    "thunderbird": Client(
        packages="thunderbird", entry="thunderbird.desktop", window="^Write: ",
        account={".thunderbird/profiles.ini": sections(("Profile0", "Name=default", "IsRelative=1", "Path=tester",
                                                        "Default=1")),
                 ".thunderbird/tester/prefs.js": THUNDERBIRD_PREFERENCES},
        drafts=".thunderbird/tester/Mail/Local Folders/Drafts"),
    "evolution": Client(
        packages="evolution", entry="org.gnome.Evolution.desktop", window="^It's ",
        account={".config/evolution/sources/tester.source": EVOLUTION_ACCOUNT,
                 ".config/evolution/sources/tester-identity.source": EVOLUTION_IDENTITY,
                 ".config/evolution/sources/tester-transport.source": EVOLUTION_TRANSPORT},
        drafts=".local/share/evolution/mail/local/.Drafts/cur/*"),
    "kmail": Client(
        packages="kmail akonadi-backend-sqlite", entry="org.kde.kmail2.desktop", window="^KMail|^It's ",
        account={".config/emailidentities": KMAIL_IDENTITY,
                 ".config/akonadi/akonadiserverrc": sections(("%General", "Driver=QSQLITE")),
                 # Else it makes its folders when the composer is there already, and may lose what it keeps then.
                 ".config/akonadi/agentsrc": sections(("Instances", f"{KMAIL_FOLDERS}_0\\AgentType={KMAIL_FOLDERS}")),
                 f".config/{KMAIL_FOLDERS}_0rc": sections(("General", "Path[$e]=$HOME/.local/share/local-mail/")),
                 ".config/specialmailcollectionsrc": sections(("SpecialCollections",
                                                               f"DefaultResourceId={KMAIL_FOLDERS}_0"))},
        drafts=".local/share/*local-mail*/drafts/*/*"),
    "claws": Client(
        packages="claws-mail", entry="claws-mail.desktop", window=" - Compose message",
        account={".claws-mail/accountrc": MH_ACCOUNT, ".claws-mail/folderlist.xml": MH_FOLDERS,
                 ".claws-mail/clawsrc": sections(("Common", "enable_aspell=0", "compose_notebook_height=240"))},
        drafts="Mail/draft/[0-9]*"),
    "sylpheed": Client(
        packages="sylpheed", entry="sylpheed.desktop", window=" - Compose",
        account={".sylpheed-2.0/accountrc": MH_ACCOUNT, ".sylpheed-2.0/folderlist.xml": MH_FOLDERS,
                 ".sylpheed-2.0/sylpheedrc": sections(("Common",))},
        drafts="Mail/draft/[0-9]*"),
    "mutt": mutt("mutt"),
    "neomutt": mutt("neomutt"),
    "balsa": Client(packages="balsa", entry="balsa-mailto-handler.desktop"),
}
